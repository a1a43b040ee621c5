#include "widgets/progressStyle.h"
#include "widgets/progressProcess.h"

#include <QImage>
#include <QPainter>
#include <QProxyStyle>
#include <QStyleOptionProgressBar>
#include <QTest>

#include <limits>

namespace
{

constexpr QRgb windowColor = 0xff203040;
constexpr QRgb highlight = 0xffff8000;
constexpr QRgb text = 0xff00ff00;
constexpr QRgb highlightedText = 0xff0000ff;

QPalette referencePalette()
{
    const std::pair<QPalette::ColorRole, QRgb> colors[] = {
        {QPalette::Window, windowColor},    {QPalette::Highlight, highlight},
        {QPalette::Light, 0xffffffff},      {QPalette::Midlight, 0xffd0d0d0},
        {QPalette::Mid, 0xff909090},        {QPalette::Dark, 0xff606060},
        {QPalette::Shadow, 0xff000000},     {QPalette::Button, 0xffc0c0c0},
        {QPalette::Base, 0xffffffff},       {QPalette::Text, text},
        {QPalette::WindowText, 0xffffff00}, {QPalette::HighlightedText, highlightedText},
    };
    QPalette palette;
    for (const auto &[role, color] : colors)
        palette.setColor(role, QColor(color));
    return palette;
}

/// How a bar lies and which way it grows.
enum look { horizontal, inverted, rightToLeft, rtlInverted, upright, uprightInverted, downward };

void setLook(QProgressBar &bar, look how)
{
    const bool vertical = how == upright || how == uprightInverted || how == downward;
    bar.setOrientation(vertical ? Qt::Vertical : Qt::Horizontal);
    bar.setInvertedAppearance(how == inverted || how == rtlInverted || how == uprightInverted);
    bar.setLayoutDirection(how == rightToLeft || how == rtlInverted ? Qt::RightToLeft : Qt::LeftToRight);
    bar.setTextDirection(how == downward ? QProgressBar::TopToBottom : QProgressBar::BottomToTop);
}

QImage grab(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// Whether the column (of a vertical bar: the row) `at` shows `color` anywhere.
bool shows(const QImage &bar, bool vertical, int at, QRgb color)
{
    const int across = vertical ? bar.width() : bar.height();
    for (int i = 0; i < across; ++i) {
        if ((vertical ? bar.pixel(i, at) : bar.pixel(at, i)) == color)
            return true;
    }
    return false;
}

bool showsAnywhere(const QImage &bar, QRgb color)
{
    for (int x = 0; x < bar.width(); ++x) {
        if (shows(bar, false, x, color))
            return true;
    }
    return false;
}

/// A bar of the product with colours that can be told apart and letters without grey edges.
class testBar : public progressProcess
{
public:
    explicit testBar(const QSize &size) : progressProcess(nullptr)
    {
        setStyle(&m_style);
        setPalette(referencePalette());
        QFont font(QStringLiteral("Arial"), 10);
        font.setStyleStrategy(QFont::NoAntialias);
        setFont(font);
        resize(size);
    }

    /// A label longer than any bar of these tests, underlined so that it has no gaps.
    void showLine()
    {
        QFont underlined = font();
        underlined.setUnderline(true);
        setFont(underlined);
        setFormat(QString(80, QLatin1Char('n')));
    }

private:
    progressStyle m_style;
};

class wideChunks : public QProxyStyle
{
public:
    explicit wideChunks(int width) : QProxyStyle(new progressStyle), m_width(width) {}
    int pixelMetric(PixelMetric metric, const QStyleOption *opt, const QWidget *widget) const override
    {
        return metric == PM_ProgressBarChunkWidth ? m_width : QProxyStyle::pixelMetric(metric, opt, widget);
    }

private:
    int m_width;
};

} // namespace

class progressStyleTest : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }

private slots:
    void sameAsReferencePicture_data();
    void sameAsReferencePicture();
    void fillOfExtremeRanges_data();
    void fillOfExtremeRanges();
    void fillOfSmallBars();
    void labelChangesColour_data();
    void labelChangesColour();
    void labelOfVerticalBarReads_data();
    void labelOfVerticalBarReads();
    void noLabel_data();
    void noLabel();
    void wideChunksEndTheLabelEarly();
    void painterIsLeftAsItWas();
};

void progressStyleTest::sameAsReferencePicture_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("how");

    const QSize wide(200, 26);
    const QSize tall(24, 120);
    QTest::newRow("h0") << wide << 100 << 0 << int(horizontal);
    QTest::newRow("h1") << wide << 100 << 1 << int(horizontal);
    QTest::newRow("h37") << wide << 100 << 37 << int(horizontal);
    QTest::newRow("h37inv") << wide << 100 << 37 << int(inverted);
    QTest::newRow("h37rtl") << wide << 100 << 37 << int(rightToLeft);
    QTest::newRow("h50") << QSize(201, 26) << 100 << 50 << int(horizontal);
    QTest::newRow("h99") << wide << 100 << 99 << int(horizontal);
    QTest::newRow("h100") << wide << 100 << 100 << int(horizontal);
    QTest::newRow("h5of7") << QSize(150, 20) << 7 << 5 << int(horizontal);
    QTest::newRow("tiny") << QSize(8, 8) << 100 << 50 << int(horizontal);
    QTest::newRow("v0") << tall << 100 << 0 << int(upright);
    QTest::newRow("v40") << tall << 100 << 40 << int(upright);
    QTest::newRow("v40inv") << tall << 100 << 40 << int(uprightInverted);
    QTest::newRow("v100") << tall << 100 << 100 << int(upright);
}

void progressStyleTest::sameAsReferencePicture()
{
    QFETCH(QSize, size);
    QFETCH(int, maximum);
    QFETCH(int, value);
    QFETCH(int, how);

    QImage expected(QStringLiteral(MOTIF_PICTURES "/%1.png").arg(QLatin1String(QTest::currentDataTag())));
    QVERIFY(!expected.isNull());
    testBar bar(size);
    setLook(bar, look(how));
    bar.setTextVisible(false);
    bar.setRange(0, maximum);
    bar.setValue(value);
    QCOMPARE(grab(bar), expected.convertToFormat(QImage::Format_RGB32));
}

void progressStyleTest::fillOfExtremeRanges_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("filled");

    constexpr int least = std::numeric_limits<int>::min();
    constexpr int most = std::numeric_limits<int>::max();
    QTest::newRow("half of everything") << least << most << 0 << 98;
    QTest::newRow("nearly everything") << least << most << most - 1 << 195;
    QTest::newRow("everything") << least << most << most << 196;
    QTest::newRow("below zero") << -200 << -100 << -150 << 98;
    QTest::newRow("no range") << 5 << 5 << 5 << 0;
    QTest::newRow("neither range nor value") << 0 << 0 << 0 << 0;
}

void progressStyleTest::fillOfExtremeRanges()
{
    QFETCH(int, minimum);
    QFETCH(int, maximum);
    QFETCH(int, value);
    QFETCH(int, filled);

    testBar bar({200, 26});
    bar.setTextVisible(false);
    bar.setRange(minimum, maximum);
    bar.setValue(value);
    const QImage image = grab(bar);
    QCOMPARE(shows(image, false, 2, highlight), filled > 0);
    QCOMPARE(shows(image, false, 2 + filled - 1, highlight), filled > 0);
    QVERIFY(!shows(image, false, 2 + filled, highlight));
}

void progressStyleTest::fillOfSmallBars()
{
    for (int side = 1; side <= 6; ++side) {
        testBar bar({side, side});
        bar.setValue(100);
        const QImage image = grab(bar);
        int filled = 0;
        for (int i = 0; i < side * side; ++i)
            filled += image.pixel(i % side, i / side) == highlight;
        QCOMPARE(filled, qMax(0, side - 4) * qMax(0, side - 4));
    }
}

/// `edge` is the first column, from the left or from the top, behind the colour edge of the label. The
/// label's edge is rounded over the whole bar, that of the fill cut down inside the panel; so they differ
/// by up to two pixels.
void progressStyleTest::labelChangesColour_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("how");
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("edge");
    QTest::addColumn<bool>("highlightedFirst");

    const QSize wide(200, 26);
    const QSize tall(24, 120);
    constexpr int most = std::numeric_limits<int>::max();
    QTest::newRow("empty") << wide << int(horizontal) << 0 << 100 << 0 << 0 << true;
    QTest::newRow("full") << wide << int(horizontal) << 0 << 100 << 100 << 200 << true;
    QTest::newRow("ends with the fill") << wide << int(horizontal) << 0 << 100 << 37 << 74 << true;
    QTest::newRow("beyond the fill") << wide << int(horizontal) << 0 << 100 << 99 << 198 << true;
    QTest::newRow("rounded up") << QSize(150, 20) << int(horizontal) << 0 << 7 << 5 << 107 << true;
    QTest::newRow("half rounded up") << QSize(201, 26) << int(horizontal) << 0 << 100 << 50 << 101 << true;
    QTest::newRow("rounded down") << QSize(201, 26) << int(horizontal) << 0 << 100 << 36 << 72 << true;
    QTest::newRow("inverted") << wide << int(inverted) << 0 << 100 << 37 << 126 << false;
    QTest::newRow("right to left") << wide << int(rightToLeft) << 0 << 100 << 37 << 126 << false;
    QTest::newRow("right to left, inverted") << wide << int(rtlInverted) << 0 << 100 << 37 << 74 << true;
    QTest::newRow("upright") << tall << int(upright) << 0 << 100 << 40 << 72 << false;
    QTest::newRow("upright, inverted") << tall << int(uprightInverted) << 0 << 100 << 40 << 48 << true;
    QTest::newRow("downward text") << tall << int(downward) << 0 << 100 << 40 << 72 << false;
    QTest::newRow("huge range") << wide << int(horizontal) << 0 << most << most / 4 << 50 << true;
    // Both are divided by 200 first, so that 398 of 599 count as 1 of 2.
    QTest::newRow("scaled down") << wide << int(horizontal) << most - 599 << most << most - 201 << 100
                                 << true;
}

void progressStyleTest::labelChangesColour()
{
    QFETCH(QSize, size);
    QFETCH(int, how);
    QFETCH(int, minimum);
    QFETCH(int, maximum);
    QFETCH(int, value);
    QFETCH(int, edge);
    QFETCH(bool, highlightedFirst);

    testBar bar(size);
    setLook(bar, look(how));
    bar.showLine();
    bar.setRange(minimum, maximum);
    bar.setValue(value);

    const QImage image = grab(bar);
    const bool vertical = bar.orientation() == Qt::Vertical;
    const int length = vertical ? size.height() : size.width();
    const QRgb before = highlightedFirst ? highlightedText : text;
    const QRgb behind = highlightedFirst ? text : highlightedText;
    for (int at = 0; at < length; ++at) {
        const QByteArray where = "at " + QByteArray::number(at);
        QVERIFY2(shows(image, vertical, at, at < edge ? before : behind), where);
        QVERIFY2(!shows(image, vertical, at, at < edge ? behind : before), where);
    }
}

void progressStyleTest::labelOfVerticalBarReads_data()
{
    QTest::addColumn<int>("how");
    QTest::addColumn<bool>("startsBelow");
    QTest::newRow("upwards") << int(upright) << true;
    QTest::newRow("downwards") << int(downward) << false;
}

void progressStyleTest::labelOfVerticalBarReads()
{
    QFETCH(int, how);
    QFETCH(bool, startsBelow);

    testBar bar({24, 120});
    setLook(bar, look(how));
    bar.setFormat(QStringLiteral("MM ...."));
    bar.setValue(0);
    const QImage image = grab(bar);
    int above = 0;
    int below = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) == text)
                ++(y < image.height() / 2 ? above : below);
        }
    }
    QVERIFY(above > 0 && below > 0);
    QCOMPARE(below > above, startsBelow);
}

void progressStyleTest::noLabel_data()
{
    QTest::addColumn<int>("minimum");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<bool>("textVisible");
    QTest::addColumn<bool>("labelled");
    QTest::newRow("an ordinary bar") << 0 << 100 << true << true;
    QTest::newRow("hidden text") << 0 << 100 << false << false;
    QTest::newRow("no range") << 50 << 50 << true << false;
}

void progressStyleTest::noLabel()
{
    QFETCH(int, minimum);
    QFETCH(int, maximum);
    QFETCH(bool, textVisible);
    QFETCH(bool, labelled);

    testBar bar({200, 26});
    bar.showLine();
    bar.setTextVisible(textVisible);
    bar.setRange(minimum, maximum);
    bar.setValue(50);
    const QImage image = grab(bar);
    QCOMPARE(showsAnywhere(image, text), labelled);
    QCOMPARE(showsAnywhere(image, highlightedText), labelled);
}

void progressStyleTest::wideChunksEndTheLabelEarly()
{
    wideChunks style(30);
    testBar bar({200, 26});
    bar.setStyle(&style);
    bar.showLine();

    // Six whole chunks: half of the value fills three, and a full bar has no text in the last 20 columns.
    bar.setValue(50);
    QImage image = grab(bar);
    QVERIFY(shows(image, false, 89, highlightedText) && !shows(image, false, 89, text));
    QVERIFY(shows(image, false, 90, text) && !shows(image, false, 90, highlightedText));
    bar.setValue(100);
    image = grab(bar);
    QVERIFY(shows(image, false, 179, highlightedText));
    QVERIFY(!shows(image, false, 180, highlightedText) && !showsAnywhere(image, text));
}

void progressStyleTest::painterIsLeftAsItWas()
{
    QStyleOptionProgressBar opt;
    opt.rect = QRect(0, 0, 24, 120);
    opt.state = QStyle::State_Enabled;
    opt.maximum = 100;
    opt.progress = 40;
    opt.textVisible = true;
    opt.text = QStringLiteral("40%");

    QImage canvas(100, 200, QImage::Format_RGB32);
    QPainter painter(&canvas);
    painter.translate(30, 40);
    const QTransform before = painter.transform();
    const progressStyle style;
    style.drawControl(QStyle::CE_ProgressBarLabel, &opt, &painter);
    QCOMPARE(painter.transform(), before);
    // Neither an option of another kind nor none at all is a bar.
    const QStyleOption other(1, QStyleOption::SO_Default);
    style.drawControl(QStyle::CE_ProgressBarLabel, &other, &painter);
    style.drawControl(QStyle::CE_ProgressBarLabel, nullptr, &painter);
    QCOMPARE(painter.transform(), before);
}

QTEST_MAIN(progressStyleTest)
#include "progressStyleTest.moc"
