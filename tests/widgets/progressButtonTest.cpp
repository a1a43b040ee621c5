#include "widgets/progressButton.h"
#include "widgets/appearance.h"

#include <QApplication>
#include <QImage>
#include <QTest>

namespace
{

constexpr QRgb black = 0xff000000;
const QSize usual(100, 40);

void setControls(const char *light, const char *dark, const char *base, const char *focus)
{
    appearance::m_shadowLightColor = QColor(light);
    appearance::m_shadowDarkColor = QColor(dark);
    appearance::m_buttonBaseColor = QColor(base);
    appearance::m_focusFrameColor = QColor(focus);
}

QImage grab(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// The frame's colour is read in the middle of its left side, the body's ones in the column beside the
/// left outline, where no caption reaches.
QRgb frameOf(const QImage &button)
{
    return button.pixel(1, button.height() / 2);
}

QRgb bodyOf(const QImage &button)
{
    return button.pixel(6, button.height() / 2);
}

} // namespace

class progressButtonTest : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }

private slots:
    void init();
    void geometry();
    void gradientStops();
    void unsetColoursAreBlack();
    void captionStaysInsideTheBody();
    void captionIsDrawnAsItCame();
    void frameFollowsTheFocus();
    void newColoursReachTheFrameAtOnceTheBodyWithTheSize();
    void sizesByTurns();
};

/// Colours that can be told apart, and a shared cache that was built for a size of no test.
void progressButtonTest::init()
{
    setControls("#ffffff", "#404040", "#00c000", "#ff0000");
    progressButton other(nullptr);
    other.resize(13, 17);
    grab(other);
}

void progressButtonTest::geometry()
{
    progressButton button(nullptr);
    button.resize(usual);
    const QImage image = grab(button);
    const QRgb frame = QColor("#00c000").rgb();
    const QRgb outside = button.palette().color(QPalette::Window).rgb();
    QVERIFY(outside != frame);

    // Across the middle: frame, black outline, body, black outline, frame.
    const int y = usual.height() / 2;
    const QList<QPair<int, QRgb>> across{{0, frame},  {3, frame},  {4, black},  {5, frame},
                                         {94, frame}, {95, black}, {96, frame}, {99, frame}};
    for (const auto &[x, color] : across)
        QCOMPARE(qMakePair(x, image.pixel(x, y)), qMakePair(x, color));
    // Down the middle.
    const QList<QPair<int, QRgb>> down{{0, frame},  {3, frame},  {4, black},
                                       {35, black}, {36, frame}, {39, frame}};
    for (const auto &[row, color] : down)
        QCOMPARE(qMakePair(row, image.pixel(50, row)), qMakePair(row, color));
    for (const QPoint corner : {QPoint(0, 0), QPoint(99, 0), QPoint(0, 39), QPoint(99, 39)})
        QCOMPARE(image.pixel(corner), outside);
    // The corners of the body are rounded as well: frame shows where a rectangle's outline would be.
    for (const QPoint corner : {QPoint(4, 4), QPoint(95, 4), QPoint(4, 35), QPoint(95, 35)})
        QCOMPARE(image.pixel(corner), frame);
}

void progressButtonTest::gradientStops()
{
    progressButton button(nullptr);
    button.resize(40, 212);
    const QImage image = grab(button);
    // It runs from row 6 to row 206: a fifth of it to the base colour, a fifth from it.
    const auto row = [&](int y) { return QColor(image.pixel(20, y)); };
    QVERIFY(row(5).green() >= 254 && row(5).red() >= 250);
    QVERIFY(qAbs(row(26).red() - 124) <= 1); // the colour of the row's middle
    QVERIFY(row(44).red() > 0);
    for (const int y : {46, 106, 165})
        QCOMPARE(row(y), QColor("#00c000"));
    QVERIFY(row(168).red() > 0);
    QVERIFY(qAbs(row(206).red() - 0x40) <= 1 && qAbs(row(206).green() - 0x40) <= 1);
}

void progressButtonTest::unsetColoursAreBlack()
{
    setControls("", "", "", "");
    progressButton button(nullptr);
    button.resize(usual);
    const QImage image = grab(button);
    QCOMPARE(frameOf(image), black);
    QCOMPARE(bodyOf(image), black);
}

void progressButtonTest::captionStaysInsideTheBody()
{
    progressButton button(nullptr);
    button.resize(usual);
    const QImage empty = grab(button);
    button.setText(QString(100, QLatin1Char('M')));
    const QImage full = grab(button);
    QVERIFY(empty.copy(4, 4, 91, 31) != full.copy(4, 4, 91, 31));
    // The caption's rectangle ends one column short of the outline.
    QCOMPARE(full.copy(0, 0, 4, 40), empty.copy(0, 0, 4, 40));
    QCOMPARE(full.copy(95, 0, 5, 40), empty.copy(95, 0, 5, 40));
    QCOMPARE(full.copy(0, 0, 100, 4), empty.copy(0, 0, 100, 4));
    QCOMPARE(full.copy(0, 35, 100, 5), empty.copy(0, 35, 100, 5));
}

void progressButtonTest::captionIsDrawnAsItCame()
{
    progressButton button(nullptr);
    button.resize(usual);
    const QImage empty = grab(button);
    button.setText(QStringLiteral("&&&&"));
    const QImage image = grab(button);
    // Four characters wide; as mark-up for a shortcut it would be two.
    int left = usual.width();
    int right = 0;
    for (int x = 6; x < 94; ++x) {
        if (image.copy(x, 5, 1, 30) != empty.copy(x, 5, 1, 30)) {
            left = qMin(left, x);
            right = x;
        }
    }
    QVERIFY(right - left > 3 * QFontMetrics(button.font()).horizontalAdvance(QLatin1Char('&')));
}

void progressButtonTest::frameFollowsTheFocus()
{
    QWidget window;
    progressButton first(&window);
    progressButton second(&window);
    first.setGeometry(0, 0, 100, 40);
    second.setGeometry(0, 50, 100, 40);
    window.resize(100, 90);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));

    const QRgb focused = QColor("#ff0000").rgb();
    const QRgb base = QColor("#00c000").rgb();
    first.setFocus();
    QCOMPARE(frameOf(grab(first)), focused);
    QCOMPARE(frameOf(grab(second)), base);
    QCOMPARE(bodyOf(grab(first)), base);
    second.setFocus();
    QCOMPARE(frameOf(grab(first)), base);
    QCOMPARE(frameOf(grab(second)), focused);
}

void progressButtonTest::newColoursReachTheFrameAtOnceTheBodyWithTheSize()
{
    progressButton button(nullptr);
    button.resize(usual);
    grab(button);
    setControls("#ffffff", "#404040", "#0000c0", "#ff0000");
    const QRgb before = QColor("#00c000").rgb();
    const QRgb now = QColor("#0000c0").rgb();

    QCOMPARE(frameOf(grab(button)), now);
    QCOMPARE(bodyOf(grab(button)), before);
    // Another button of that size shares what was built for it.
    progressButton sameSize(nullptr);
    sameSize.resize(usual);
    QCOMPARE(bodyOf(grab(sameSize)), before);

    progressButton otherSize(nullptr);
    otherSize.resize(60, 30);
    QCOMPARE(bodyOf(grab(otherSize)), now);
    QCOMPARE(bodyOf(grab(button)), now);
}

void progressButtonTest::sizesByTurns()
{
    progressButton button(nullptr);
    const QList<QSize> sizes{{60, 30}, {120, 30}, {120, 34}, {60, 34}};
    for (int round = 0; round < 2; ++round) {
        for (const QSize &size : sizes) {
            button.resize(size);
            const QImage image = grab(button);
            QCOMPARE(image.pixel(size.width() - 5, size.height() / 2), black);
            QCOMPARE(image.pixel(size.width() / 2, size.height() - 5), black);
        }
    }
}

QTEST_MAIN(progressButtonTest)
#include "progressButtonTest.moc"
