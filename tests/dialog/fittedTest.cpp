#include "tests/dialog/dialogUnderTest.h"

#include "widgets/fittedBar.h"
#include "widgets/texts.h"
#include "widgets/theme.h"

#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QRegularExpression>
#include <QTest>
#include <QToolTip>

#include <algorithm>

/// The fitted layout, the themes, pulsing bars, and what all of them are made of.
class fittedTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void sizes();
    void growsDownwards();
    void isTwiceAsLargeWithTwiceTheFont();
    void isReadable();
    void leavesLaterEntries();
    void closesByEscape();
    void tellsScreenReaders();
    void pulses();
    void wraps();
    void readsFromRightToLeft();
    void timesLeft();
    void showsCutTextsAsToolTips();
};

namespace
{

constexpr int emPixels = 10;

QList<QWidget *> shownChildren(const QWidget &window)
{
    QList<QWidget *> children = window.findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    children.removeIf([](const QWidget *child) { return child->isHidden(); });
    return children;
}

/// Nothing is cut off by the window or by anything else.
bool isTidy(const QWidget &window)
{
    const QList<QWidget *> children = shownChildren(window);
    return std::all_of(children.begin(), children.end(), [&](const QWidget *child) {
        const auto overlaps = [child](const QWidget *other) {
            return other != child && other->geometry().intersects(child->geometry());
        };
        return window.rect().contains(child->geometry()) &&
               std::none_of(children.begin(), children.end(), overlaps);
    });
}

void useFonts(int pixels)
{
    QFont font(QStringLiteral("Sans Serif"));
    font.setPixelSize(pixels);
    appearance.m_labelFont = appearance.m_barLabelFont = appearance.m_buttonFont = font;
}

QString all(const QString &command, int count)
{
    QString commands;
    for (int i = 0; i < count; ++i)
        commands += command.arg(i);
    return commands;
}

} // namespace

void fittedTest::init()
{
    appearance = {};
    appearance.m_windowLayout = windowLayout::fitted;
    theme::instance().apply(windowTheme::light);
    useFonts(emPixels);
}

void fittedTest::sizes()
{
    const QString everything = all("create:%1;bar addButt:%1;Button%1 ", 10);
    const QString longText(400, 'w');
    const struct {
        QString commands;
        int fontPixels;
        int leastEm;
        int mostEm;
    } cases[] = {
        {"create:0;a addButt:0;b", 10, 24, 24},
        {"create:0;" + longText, 10, 40, 40},
        {"addText:0;" + longText, 10, 40, 40},
        {everything, 10, 40, 40},
        {"addButt:0;" + longText + " addButt:1;b", 10, 40, 40},
        {everything, 40, 1, 40}, // larger than the screen
    };
    for (const auto &[commands, fontPixels, leastEm, mostEm] : cases) {
        useFonts(fontPixels);
        dialogUnderTest dialog;
        dialog.run(commands);
        QVERIFY(dialog.width() >= leastEm * fontPixels && dialog.width() <= mostEm * fontPixels);
        QVERIFY(dialog.screen()->availableGeometry().contains(dialog.geometry()));
        QVERIFY(isTidy(dialog));
        for (const progressButton *button : dialog.buttons())
            QVERIFY(button->isHidden() || button->width() >= 5 * emLength(*button)(1) - 2);
    }
}

void fittedTest::growsDownwards()
{
    dialogUnderTest dialog;
    dialog.run("create:0;a");
    const QRect small = dialog.geometry();
    dialog.run("create:1;" + QString(60, 'x') + " addButt:0;b");
    const QRect large = dialog.geometry();
    QVERIFY(large.height() > small.height() && large.width() > small.width());
    QCOMPARE(large.top(), small.top());
    dialog.run("remove:1 delButt:0");
    QCOMPARE(dialog.geometry(), QRect(large.topLeft(), QSize(large.width(), small.height())));

    // A text that comes later is wrapped, too, and then keeps its room.
    dialog.run("addText:1;a");
    const int oneLine = dialog.height();
    dialog.run("updateText:1;" + QString(200, 'x'));
    QTRY_VERIFY(dialog.height() > oneLine);
    const int threeLines = dialog.height();
    dialog.run("updateText:1;a create:2;b remove:2");
    QCOMPARE(dialog.height(), threeLines);

    // Where it was dragged to, as far as there is room.
    const QRect room = dialog.screen()->availableGeometry();
    dialog.run("remove:0 remove:1 create:0;a");
    QTest::mousePress(&dialog, Qt::LeftButton, {}, {2, 2});
    QTest::mouseMove(&dialog, room.bottomRight() - dialog.rect().bottomRight() - dialog.pos());
    QTest::mouseRelease(&dialog, Qt::LeftButton);
    const QRect dragged = dialog.geometry();
    dialog.run("create:2;b create:3;" + QString(80, 'x'));
    QVERIFY(dialog.width() > dragged.width() && room.contains(dialog.geometry()));
    dialog.run("remove:0 remove:2 remove:3 create:0;a");
    QCOMPARE(dialog.geometry(), dragged);
}

void fittedTest::isTwiceAsLargeWithTwiceTheFont()
{
    const QString commands = "create:0;" + QString(30, 'x') + " addText:1;a addButt:0;Stop";
    dialogUnderTest one;
    one.run(commands);
    useFonts(2 * emPixels);
    dialogUnderTest two;
    two.run(commands);
    QVERIFY(qAbs(two.width() - 2 * one.width()) <= 4 && qAbs(two.height() - 2 * one.height()) <= 8);
}

void fittedTest::isReadable()
{
    for (const bool isDark : {false, true}) {
        theme::instance().apply(isDark ? windowTheme::dark : windowTheme::light);
        const dialogUnderTest dialog;
        const auto color = [&dialog](QPalette::ColorRole role) { return dialog.palette().color(role); };
        QCOMPARE(color(QPalette::WindowText), QColor(isDark ? Qt::white : Qt::black));
        QVERIFY(contrast(color(QPalette::WindowText), color(QPalette::Window)) >= 4.5);
        for (const double share : {0.0, 0.08, 0.2}) {
            const QColor body = mixed(color(QPalette::Button), color(QPalette::ButtonText), share);
            QVERIFY(contrast(color(QPalette::ButtonText), body) >= 4.5);
        }
        QVERIFY(contrast(color(QPalette::Highlight), color(QPalette::Base)) >= 3);
        QVERIFY(contrast(color(QPalette::Link), color(QPalette::Window)) >= 3);
        // In the grid.
        QVERIFY(contrast(appearance.m_invertedNumberColor, appearance.m_barColor) >= 4.5);
        const QColor caption = buttonTextColor(appearance.m_buttonBaseColor);
        for (const QColor &part :
             {appearance.m_shadowLightColor, appearance.m_buttonBaseColor, appearance.m_shadowDarkColor})
            QVERIFY(contrast(caption, part) >= 4.5);
    }
}

void fittedTest::leavesLaterEntries()
{
    appearance.m_dialogBackgroundColor = QColor("#222222");
    const dialogUnderTest dark;
    QCOMPARE(dark.palette().color(QPalette::Window), QColor("#222222"));
    QCOMPARE(dark.palette().color(QPalette::WindowText), QColor(Qt::white));
    appearance.m_panelTextColor = Qt::red;
    QCOMPARE(dialogUnderTest().palette().color(QPalette::WindowText), QColor(Qt::red));
    // Without a theme the grid has its black.
    appearance = {};
    QVERIFY(!panelTextColor(Qt::black).isValid() && !buttonTextColor(Qt::black).isValid());
}

void fittedTest::closesByEscape()
{
    dialogUnderTest dialog;
    dialog.run("create:0;a");
    dialog.events();
    QTest::keyClick(&dialog, Qt::Key_Escape);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.events(), "closed");
}

void fittedTest::tellsScreenReaders()
{
    dialogUnderTest dialog;
    dialog.run("create:0;Copying update:0;40 addText:1;Details addButt:0;&Stop");
    dialog.grab();
    const auto heard = [](QWidget *child) {
        QAccessibleInterface *child_ = QAccessible::queryAccessibleInterface(child);
        QAccessibleValueInterface *value = child_->valueInterface();
        return QStringLiteral("%1:%2:%3")
            .arg(child_->role() == QAccessible::ProgressBar  ? "bar"
                 : child_->role() == QAccessible::StaticText ? "text"
                                                             : "button",
                 child_->text(QAccessible::Name), value ? value->currentValue().toString() : QString());
    };
    QCOMPARE(heard(dialog.bars()[0]), "bar:Copying:40");
    QCOMPARE(heard(dialog.labels()[1]), "text:Details:");
    QCOMPARE(heard(dialog.buttons()[0]), "button:Stop:");
}

void fittedTest::pulses()
{
    for (const windowLayout layout : {windowLayout::grid, windowLayout::fitted}) {
        appearance.m_windowLayout = layout;
        dialogUnderTest dialog;
        dialog.run("create:0;a update:0;40 create:1;b update:1;60");
        dialog.pulseBar(0);
        QVERIFY(dialog.bars()[0]->isPulsing() && !dialog.bars()[1]->isPulsing());
        const QImage before = dialog.grab().toImage();
        QTRY_VERIFY(dialog.grab().toImage() != before);
        dialog.events();
        dialog.updateBar(1, 80);
        QCOMPARE(dialog.events(), "totalProgress=60|-1");
        dialogUnderTest copy;
        copy.copyFromDialog(dialog);
        QVERIFY(copy.bars()[0]->isPulsing());
        dialog.updateBar(0, 40);
        QVERIFY(!dialog.bars()[0]->isPulsing());
        dialog.pulseBar(1);
        dialog.run("create:1;b");
        QVERIFY(!dialog.bars()[1]->isPulsing());
    }
}

void fittedTest::wraps()
{
    const std::pair<QString, QStringList> cases[] = {
        {"", {""}},
        {"a", {"a"}},
        {"a\n\nb", {"a", "", "b"}},
        {"a\n", {"a"}},
        {"a\nb\nc\nd", {"a", "b", "c d"}},
        {"wwww wwww wwww", {"wwww ", "wwww ", "wwww"}},
        {"wwwwwwwwww", {"wwwww", "wwwww"}},
        {QString(40, 'w'), {"wwwww", "wwwww", "wwww…"}},
    };
    QFont font(QStringLiteral("Monospace"));
    font.setPixelSize(20);
    const int width = QFontMetrics(font).horizontalAdvance("wwwww.") - 1;
    for (const auto &[text, lines] : cases)
        QCOMPARE(wrappedText(text, font, width, 3), lines);
}

void fittedTest::readsFromRightToLeft()
{
    dialogUnderTest dialog;
    for (const QString &text : {QString(20, u'a'), QString(20, u'\u05d0')}) {
        dialog.run("addText:0;" + text);
        const QImage halves = dialog.labels()[0]->grab().toImage().scaled(2, 1, {}, Qt::SmoothTransformation);
        QCOMPARE(halves.pixelColor(0, 0).lightness() > halves.pixelColor(1, 0).lightness(), text[0] != u'a');
    }
}

void fittedTest::timesLeft()
{
    const std::pair<int, const char *> cases[] = {
        {0, "0 s left"},      {59, "59 s left"},     {60, "1 min 0 s left"},   {599, "9 min 59 s left"},
        {600, "10 min left"}, {3599, "59 min left"}, {3600, "1 h 0 min left"}, {90000, "25 h 0 min left"}};
    for (const auto &[seconds, text] : cases)
        QCOMPARE(timeLeft(seconds), text);
}

void fittedTest::showsCutTextsAsToolTips()
{
    const QString longText = QString(400, 'w');
    for (const QString &text : {longText, QStringLiteral("a")}) {
        dialogUnderTest dialog;
        dialog.run("create:0;" + text + " addText:1;" + text + " addButt:0;" + text);
        const QList<QWidget *> children{dialog.bars()[0], dialog.labels()[1], dialog.buttons()[0]};
        for (QWidget *child : children) {
            QToolTip::hideText();
            QHelpEvent asks(QEvent::ToolTip, {1, 1}, child->mapToGlobal(QPoint(1, 1)));
            QApplication::sendEvent(child, &asks);
            QString shown = QToolTip::isVisible() ? QToolTip::text() : QString();
            shown.remove(QRegularExpression(QStringLiteral("<[^>]*>")));
            QCOMPARE(shown, text == longText ? longText : QString());
        }
    }
}

QTEST_MAIN(fittedTest)
#include "fittedTest.moc"
