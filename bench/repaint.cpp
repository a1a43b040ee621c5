// How long a full repaint of the progress dialog takes in both layouts, beside the same widgets in the
// toolkit's Fusion style: ten bars and ten buttons on a screen of 1920 by 1080. The windows are repainted by
// turns, so that whatever else the machine does hits all of them. And what an update of a bar costs.

#include "dialog/CProgressDialog.h"
#include "dialog/dialogHost.h"
#include "widgets/theme.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>
#include <QStyleFactory>
#include <QTest>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

namespace
{

constexpr int slotCount = CProgressDialog::MAX_ENTRIES;
constexpr int warmups = 20;
constexpr int rounds = 400;

class silentHost : public dialogHost
{
public:
    void progressVisibilityChanged(bool) override {}
    void runChanged(bool) override {}
    void updateTotalPercent(int, int) override {}
    void clicked(int) override {}
    void closed() override {}
    bool isInputBlocked() const override { return false; }
};

/// Never deleted: it lives as long as the process.
CProgressDialog &filledDialog(windowLayout layout)
{
    static silentHost host;
    appearance.m_windowLayout = layout;
    CProgressDialog &dialog = *new CProgressDialog(host);
    for (int i = 0; i < slotCount; ++i) {
        dialog.createBar(i, QStringLiteral("Files copied to disk %1").arg(i));
        dialog.updateBar(i, 5 + 10 * i);
        dialog.addButton(i, QStringLiteral("B %1").arg(i));
    }
    dialog.show();
    return dialog;
}

/// A window with a Fusion widget for each bar and button that `dialog` shows.
std::unique_ptr<QWidget> fusionCopy(const QWidget &dialog, QStyle *fusion)
{
    auto window = std::make_unique<QWidget>();
    window->setStyle(fusion);
    window->resize(dialog.size());
    const auto place = [fusion](QWidget *copy, const QWidget *original) {
        copy->setStyle(fusion);
        copy->setFont(original->font());
        copy->setGeometry(original->geometry());
    };
    for (const auto *bar : dialog.findChildren<QProgressBar *>()) {
        if (!bar->isVisible())
            continue;
        auto *copy = new QProgressBar(window.get());
        place(copy, bar);
        copy->setFormat(bar->format());
        copy->setValue(bar->value());
        copy->setAlignment(Qt::AlignCenter);
    }
    for (const auto *button : dialog.findChildren<QPushButton *>()) {
        if (button->isVisible())
            place(new QPushButton(button->text(), window.get()), button);
    }
    return window;
}

int shownWidgets(const QWidget &window)
{
    const auto children = window.findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    return int(
        std::count_if(children.begin(), children.end(), [](const QWidget *w) { return w->isVisible(); }));
}

/// Children that cover what is below them are not repainted with their window unless they ask for it.
double repaintMs(QWidget &window)
{
    for (auto *child : window.findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        child->update();
    QElapsedTimer timer;
    timer.start();
    window.repaint();
    return double(timer.nsecsElapsed()) / 1e6;
}

struct figures {
    double median;
    double percentile95;
};

figures summed(std::vector<double> &samples)
{
    std::sort(samples.begin(), samples.end());
    return {samples[samples.size() / 2], samples[samples.size() * 95 / 100]};
}

struct subject {
    const char *name;
    QWidget *window;
    std::vector<double> samples;
};

bool isShown(const subject &each)
{
    return QTest::qWaitForWindowExposed(each.window) && shownWidgets(*each.window) >= 2 * slotCount;
}

void measureRepaints(std::vector<subject> &subjects)
{
    for (int i = -warmups; i < rounds; ++i) {
        for (subject &each : subjects) {
            const double ms = repaintMs(*each.window);
            if (i >= 0)
                each.samples.push_back(ms);
        }
    }
    std::printf("full repaint, %d bars and %d buttons, %d rounds on %s\n", slotCount, slotCount, rounds,
                qPrintable(QGuiApplication::platformName()));
    std::printf("  %-8s %12s %9s %9s\n", "", "pixels", "median", "95 %");
    for (subject &each : subjects) {
        const figures ms = summed(each.samples);
        std::printf("  %-8s %5d x %4d %6.2f ms %6.2f ms\n", each.name, each.window->width(),
                    each.window->height(), ms.median, ms.percentile95);
    }
}

/// Nothing is painted meanwhile, as in a burst of messages.
double updateNs(CProgressDialog &dialog)
{
    constexpr int updates = 10'000'000;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < updates; ++i)
        dialog.updateBar(i % slotCount, i / slotCount % 101);
    return double(timer.nsecsElapsed()) / updates;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    appearance.m_desktopWidth = 1920;
    appearance.m_desktopHeight = 1080;
    theme::instance().apply(windowTheme::light);
    CProgressDialog &grid = filledDialog(windowLayout::grid);
    CProgressDialog &fitted = filledDialog(windowLayout::fitted);
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
    const std::unique_ptr<QWidget> copy = fusionCopy(grid, fusion.get());
    copy->show();
    std::vector<subject> subjects{{"grid", &grid, {}}, {"fitted", &fitted, {}}, {"Fusion", copy.get(), {}}};
    if (!std::all_of(subjects.begin(), subjects.end(), isShown)) {
        std::fputs("repaint: the windows are not shown as they should be\n", stderr);
        return 1;
    }
    measureRepaints(subjects);
    std::printf("update of a bar: grid %.0f ns, fitted %.0f ns\n", updateNs(grid), updateNs(fitted));
    return 0;
}
