#include "dialog/roundRectRegion.h"
#include "tests/dialog/dialogUnderTest.h"
#include "widgets/appearance.h"

#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace
{

const QColor light("#ff0000");
const QColor dark("#0000ff");
const QColor background("#20c040");
const QColor frame("#ffcc00");

/// The dialog as a compositor gets it, its children hidden.
recordingHost host;

QImage grabPanel(CProgressDialog &dialog)
{
    for (auto *child : dialog.findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        child->hide();
    return dialog.grab().toImage().convertToFormat(QImage::Format_ARGB32);
}

/// What multiplying by an opacity rounds away, twice.
constexpr int rounding = 2;
/// How much the steepest of these gradients changes from one row to the next: the toolkit takes the colours
/// from a table, which can shift them by a row.
constexpr int aRow = 13;

bool isNear(QRgb a, QRgb b, int tolerance)
{
    return std::max({qAbs(qRed(a) - qRed(b)), qAbs(qGreen(a) - qGreen(b)), qAbs(qBlue(a) - qBlue(b)),
                     qAbs(qAlpha(a) - qAlpha(b))}) <= tolerance;
}

#define COMPARE_COLOR(actual, expected, tolerance)                                                           \
    QVERIFY2(isNear(actual, (expected).rgba(), tolerance), QByteArray::number(actual, 16).constData())

/// `color` between two colours of a gradient: `share` of the second one.
QColor mixed(const QColor &first, const QColor &second, qreal share)
{
    const auto mix = [share](int a, int b) { return int(a + (b - a) * share); };
    return QColor(mix(first.red(), second.red()), mix(first.green(), second.green()),
                  mix(first.blue(), second.blue()));
}

QColor withAlpha(QColor color, int alpha)
{
    color.setAlpha(alpha);
    return color;
}

/// Four quarters of different colours.
QImage quarters(const QSize &size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixelColor(x, y, (x < size.width() / 2) == (y < size.height() / 2) ? light : dark);
    }
    return image;
}

} // namespace

class paintingTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void regionOfRoundedRectangle();
    void frameRing();
    void gradient();
    void opacity_data();
    void opacity();
    void imageIsStretchedWithoutSmoothing();
    void reloadKeepsTheBackground();

private:
    void useImage(const QImage &image) const;

    QTemporaryDir m_folder;
};

void paintingTest::init()
{
    appearance.m_desktopWidth = 640;
    appearance.m_desktopHeight = 480;
    appearance.m_shadowLightColor = light;
    appearance.m_shadowDarkColor = dark;
    appearance.m_dialogBackgroundColor = background;
    appearance.m_dialogFrameColor = frame;
    appearance.m_dialogBackgroundAlphaval = 255;
    appearance.m_windowPixmap = QStringLiteral("unknown");
}

void paintingTest::useImage(const QImage &image) const
{
    appearance.m_windowPixmap = m_folder.filePath(QStringLiteral("background.png"));
    QVERIFY(image.save(appearance.m_windowPixmap));
}

void paintingTest::regionOfRoundedRectangle()
{
    // Radius 4 in 12 by 12 pixels at (100, 50): the last column and row stay out.
    const char *const rows[] = {
        "..#######...", ".#########..", "###########.", "###########.", "###########.", "###########.",
        "###########.", "###########.", "###########.", "###########.", ".#########..", "............",
    };
    const QRegion region = roundRectRegion(QRect(100, 50, 12, 12), 4);
    for (int y = 0; y < 12; ++y) {
        QByteArray row;
        for (int x = 0; x < 12; ++x)
            row += region.contains(QPoint(100 + x, 50 + y)) ? '#' : '.';
        QCOMPARE(row, QByteArray(rows[y]));
    }
    QCOMPARE(roundRectRegion(QRect(4, 4, 12, 12), 1), QRegion(4, 4, 11, 11));
}

void paintingTest::frameRing()
{
    // Sizes by turns.
    for (const int screenWidth : {640, 1000, 640}) {
        appearance.m_desktopWidth = screenWidth;
        CProgressDialog dialog(host);
        const QImage image = grabPanel(dialog);
        const int w = image.width();
        const int h = image.height();
        // Outside, all is transparent.
        const QRegion outer = roundRectRegion(dialog.rect(), 4);
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x)
                QCOMPARE(qAlpha(image.pixel(x, y)) != 0, outer.contains(QPoint(x, y)));
        }
        // The outline is a pixel short at the right and at the bottom; the ring is four pixels wide.
        for (const int x : {0, 3, w - 5, w - 2})
            QCOMPARE(image.pixel(x, h / 2), frame.rgba());
        for (const int x : {4, w - 6})
            QCOMPARE(image.pixel(x, h / 2), background.rgba());
        for (const int y : {0, 3, h - 5, h - 2})
            QCOMPARE(image.pixel(w / 2, y), frame.rgba());
        // A radius of 1 leaves the inner corners square.
        for (const QPoint corner : {QPoint(4, 4), QPoint(w - 6, 4), QPoint(4, h - 6), QPoint(w - 6, h - 6)})
            QVERIFY(image.pixel(corner) != frame.rgba());
    }
}

void paintingTest::gradient()
{
    CProgressDialog dialog(host);
    const auto showsShadows = [&](const QColor &top, const QColor &bottom) {
        const QImage image = grabPanel(dialog);
        const int h = image.height();
        const int x = image.width() / 2;
        // A row shows the colour of its middle; the frame hides the ends.
        for (const int y : {4, 9}) {
            COMPARE_COLOR(image.pixel(x, y), mixed(top, background, (y + 0.5) / h / 0.05), aRow);
            const int mirrored = h - 1 - y - 1;
            COMPARE_COLOR(image.pixel(x, mirrored), mixed(bottom, background, (y + 1.5) / h / 0.05), aRow);
        }
        for (const int y : {h / 20 + 1, h / 2, h - h / 20 - 2})
            QCOMPARE(image.pixel(x, y), background.rgba());
        QVERIFY(image.pixel(x, h / 20 - 3) != background.rgba());
        QVERIFY(image.pixel(x, h - h / 20 + 2) != background.rgba());
        QCOMPARE(image.pixel(x, 1), frame.rgba());
    };
    showsShadows(light, dark);
    // New shadows reach an open dialog; frame and background are its own.
    appearance.m_shadowLightColor = QColor("#00ffff");
    appearance.m_shadowDarkColor = QColor("#ffff00");
    appearance.m_dialogBackgroundColor = appearance.m_dialogFrameColor = Qt::black;
    showsShadows(appearance.m_shadowLightColor, appearance.m_shadowDarkColor);
}

void paintingTest::opacity_data()
{
    QTest::addColumn<int>("alpha");
    for (const int alpha : {0, 200, 255})
        QTest::addRow("%d", alpha) << alpha;
}

void paintingTest::opacity()
{
    QFETCH(int, alpha);
    appearance.m_dialogBackgroundAlphaval = alpha;
    CProgressDialog dialog(host);
    const QImage panel = grabPanel(dialog);
    const QPoint middle = panel.rect().center();
    COMPARE_COLOR(panel.pixel(middle), alpha ? withAlpha(background, alpha) : QColor(0, 0, 0, 0), rounding);
    // The frame does not take part, the shadows only towards the middle.
    QCOMPARE(panel.pixel(1, middle.y()), frame.rgba());
    const qreal share = 4.5 / panel.height() / 0.05;
    QVERIFY(qAbs(qAlpha(panel.pixel(middle.x(), 4)) - (255 + (alpha - 255) * share)) <= aRow);

    if (alpha == 0)
        return;
    // An image takes part with the frame that lies on it, and covers the corners as well.
    QImage image(10, 10, QImage::Format_RGB32);
    image.fill(dark);
    useImage(image);
    CProgressDialog imageDialog(host);
    const QImage imagePanel = grabPanel(imageDialog);
    for (const QPoint where : {QPoint(0, 0), QPoint(imagePanel.width() - 1, 50), QPoint(50, 50)})
        COMPARE_COLOR(imagePanel.pixel(where), withAlpha(dark, alpha), rounding);
    const qreal single = alpha / 255.0;
    const qreal together = single + single * (1 - single);
    const QColor onImage = mixed(dark, frame, single / together);
    COMPARE_COLOR(imagePanel.pixel(1, middle.y()), withAlpha(onImage, qRound(255 * together)), rounding);
}

void paintingTest::imageIsStretchedWithoutSmoothing()
{
    for (const QSize size : {QSize(2, 2), QSize(100, 50), QSize(1500, 1200)}) {
        useImage(quarters(size));
        CProgressDialog dialog(host);
        const QImage panel = grabPanel(dialog);
        const int halfW = panel.width() / 2;
        const int halfH = panel.height() / 2;
        QCOMPARE(panel.pixel(halfW - 2, halfH - 2), light.rgba());
        QCOMPARE(panel.pixel(halfW + 2, halfH - 2), dark.rgba());
        QCOMPARE(panel.pixel(halfW - 2, halfH + 2), dark.rgba());
        QCOMPARE(panel.pixel(halfW + 2, halfH + 2), light.rgba());
        // Nothing between the two colours, and the image reaches the window's last pixel.
        for (int x = 4; x < panel.width() - 5; ++x)
            QVERIFY(panel.pixel(x, halfH - 2) == light.rgba() || panel.pixel(x, halfH - 2) == dark.rgba());
        QCOMPARE(panel.pixel(panel.width() - 1, panel.height() - 1), light.rgba());
    }
}

void paintingTest::reloadKeepsTheBackground()
{
    CProgressDialog plain(host);
    const QImage plainPanel = grabPanel(plain);
    plain.reloadPixmap();
    QCOMPARE(grabPanel(plain), plainPanel);

    useImage(quarters({10, 10}));
    CProgressDialog dialog(host);
    const QImage panel = grabPanel(dialog);
    QVERIFY(panel != plainPanel);
    dialog.reloadPixmap();
    QCOMPARE(grabPanel(dialog), panel);

    // An image that does not load leaves the gradient.
    QVERIFY(QFile::resize(appearance.m_windowPixmap, 30));
    CProgressDialog broken(host);
    QCOMPARE(grabPanel(broken), plainPanel);
    QCOMPARE(broken.palette().color(QPalette::Window), QColor(Qt::gray));
}

QTEST_MAIN(paintingTest)
#include "paintingTest.moc"
