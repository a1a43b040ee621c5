#include "widgets/progressStyle.h"

#include <QImage>
#include <QProgressBar>
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

/// A bar with any range, as the product's are painted, with colours that can be told apart and letters
/// without grey edges.
class testBar : public QProgressBar
{
public:
    explicit testBar(const QSize &size)
    {
        setAutoFillBackground(true);
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

} // namespace

class progressStyleTest : public QObject
{
    Q_OBJECT

private slots:
    void sameAsReferencePicture()
    {
        const QSize wide(200, 26);
        const QSize tall(24, 120);
        const struct {
            const char *picture;
            QSize size;
            int maximum;
            int value;
            look how;
        } bars[] = {
            {"h0", wide, 100, 0, horizontal},
            {"h1", wide, 100, 1, horizontal},
            {"h37", wide, 100, 37, horizontal},
            {"h37inv", wide, 100, 37, inverted},
            {"h37rtl", wide, 100, 37, rightToLeft},
            {"h50", {201, 26}, 100, 50, horizontal},
            {"h99", wide, 100, 99, horizontal},
            {"h100", wide, 100, 100, horizontal},
            {"h5of7", {150, 20}, 7, 5, horizontal},
            {"tiny", {8, 8}, 100, 50, horizontal},
            {"v0", tall, 100, 0, upright},
            {"v40", tall, 100, 40, upright},
            {"v40inv", tall, 100, 40, uprightInverted},
            {"v100", tall, 100, 100, upright},
        };
        for (const auto &[picture, size, maximum, value, how] : bars) {
            const QImage expected(QStringLiteral(MOTIF_PICTURES "/%1.png").arg(QLatin1String(picture)));
            QVERIFY2(!expected.isNull(), picture);
            testBar bar(size);
            setLook(bar, how);
            bar.setTextVisible(false);
            bar.setRange(0, maximum);
            bar.setValue(value);
            QVERIFY2(grab(bar) == expected.convertToFormat(QImage::Format_RGB32), picture);
        }
    }

    /// `edge` is the first column, from the left or from the top, behind the colour edge of the label. The
    /// label's edge is rounded over the whole bar, that of the fill cut down inside the panel; so they differ
    /// by up to two pixels.
    void labelChangesColour()
    {
        const QSize wide(200, 26);
        const QSize tall(24, 120);
        constexpr int most = std::numeric_limits<int>::max();
        const struct {
            const char *name;
            QSize size;
            look how;
            int value;
            int edge;
            bool highlightedFirst;
            int minimum = 0;
            int maximum = 100;
        } bars[] = {
            {"empty", wide, horizontal, 0, 0, true},
            {"full", wide, horizontal, 100, 200, true},
            {"ends with the fill", wide, horizontal, 37, 74, true},
            {"rounded up", {150, 20}, horizontal, 5, 107, true, 0, 7},
            {"inverted", wide, inverted, 37, 126, false},
            {"right to left", wide, rightToLeft, 37, 126, false},
            {"right to left, inverted", wide, rtlInverted, 37, 74, true},
            {"upright", tall, upright, 40, 72, false},
            {"upright, inverted", tall, uprightInverted, 40, 48, true},
            {"downward text", tall, downward, 40, 72, false},
            {"huge range", wide, horizontal, most / 4, 50, true, 0, most},
            // Both are divided by 200 first, so that 398 of 599 count as 1 of 2.
            {"scaled down", wide, horizontal, most - 201, 100, true, most - 599, most},
        };
        for (const auto &[name, size, how, value, edge, highlightedFirst, minimum, maximum] : bars) {
            testBar bar(size);
            setLook(bar, how);
            bar.showLine();
            bar.setRange(minimum, maximum);
            bar.setValue(value);

            const QImage image = grab(bar);
            const bool vertical = bar.orientation() == Qt::Vertical;
            for (int at = 0; at < (vertical ? size.height() : size.width()); ++at) {
                const QByteArray where = QByteArray(name) + " at " + QByteArray::number(at);
                const bool isHighlighted = (at < edge) == highlightedFirst;
                QVERIFY2(shows(image, vertical, at, isHighlighted ? highlightedText : text), where);
                QVERIFY2(!shows(image, vertical, at, isHighlighted ? text : highlightedText), where);
            }
        }
    }
};

QTEST_MAIN(progressStyleTest)
#include "progressStyleTest.moc"
