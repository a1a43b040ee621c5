// How long a full repaint of the progress dialog takes, beside the same widgets in the toolkit's Fusion
// style: ten bars and ten buttons on a screen of 1920 by 1080. The two windows are repainted by turns, so
// that whatever else the machine does hits both.

#include "dialog/CProgressDialog.h"
#include "dialog/dialogHost.h"
#include "widgets/appearance.h"

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

void applyLightLook()
{
    appearance.m_desktopWidth = 1920;
    appearance.m_desktopHeight = 1080;
    appearance.m_barColor = QColor("#1b66c9");
    appearance.m_invertedNumberColor = QColor("#ffffff");
    appearance.m_dialogBackgroundColor = appearance.m_barBackgroundColor = QColor("#f3f5f8");
    appearance.m_dialogFrameColor = QColor("#a9b8cb");
    appearance.m_shadowLightColor = QColor("#ffffff");
    appearance.m_shadowDarkColor = QColor("#c3ceda");
    appearance.m_buttonBaseColor = QColor("#e4eaf1");
    appearance.m_focusFrameColor = QColor("#1b66c9");
    appearance.m_dialogBackgroundAlphaval = 242;
}

class silentHost : public dialogHost
{
public:
    void progressVisibilityChanged(bool) override {}
    void updateTotalPercent(int, int) override {}
    void clicked(int) override {}
    void closed() override {}
    bool isInputBlocked() const override { return false; }
};

/// Never deleted: it lives as long as the process.
CProgressDialog &filledDialog()
{
    static silentHost host;
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

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    applyLightLook();
    CProgressDialog &dialog = filledDialog();
    const std::unique_ptr<QStyle> fusion(QStyleFactory::create(QStringLiteral("Fusion")));
    const std::unique_ptr<QWidget> copy = fusionCopy(dialog, fusion.get());
    copy->show();
    if (!QTest::qWaitForWindowExposed(&dialog) || !QTest::qWaitForWindowExposed(copy.get()) ||
        shownWidgets(dialog) != 2 * slotCount || shownWidgets(*copy) != 2 * slotCount) {
        std::fputs("repaint: the windows are not shown as they should be\n", stderr);
        return 1;
    }

    std::vector<double> own;
    std::vector<double> theirs;
    for (int i = -warmups; i < rounds; ++i) {
        const double first = repaintMs(dialog);
        const double second = repaintMs(*copy);
        if (i >= 0) {
            own.push_back(first);
            theirs.push_back(second);
        }
    }
    const figures dialogMs = summed(own);
    const figures fusionMs = summed(theirs);
    std::printf("full repaint of %d x %d pixels, %d bars and %d buttons, %d rounds on %s\n", dialog.width(),
                dialog.height(), slotCount, slotCount, rounds, qPrintable(QGuiApplication::platformName()));
    std::printf("  %-8s %8s %8s\n", "", "median", "95 %");
    std::printf("  %-8s %5.2f ms %5.2f ms\n", "dialog", dialogMs.median, dialogMs.percentile95);
    std::printf("  %-8s %5.2f ms %5.2f ms\n", "Fusion", fusionMs.median, fusionMs.percentile95);
    return 0;
}
