#include "tests/dialog/dialogUnderTest.h"

#include "dialog/gridLayout.h"

#include <QImage>
#include <QPainter>
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
QImage grabPanel(CProgressDialog &dialog)
{
    for (auto *child : dialog.findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        child->hide();
    return dialog.grab().toImage().convertToFormat(QImage::Format_ARGB32);
}

/// How much the steepest of these gradients changes from one row to the next: the toolkit takes the colours
/// from a table, which can shift them by a row.
constexpr int aRow = 16;

int difference(const QColor &one, const QColor &other)
{
    return std::max({qAbs(one.red() - other.red()), qAbs(one.green() - other.green()),
                     qAbs(one.blue() - other.blue()), qAbs(one.alpha() - other.alpha())});
}

/// Whether a colour lies between two others, give or take a row.
bool isBetween(const QColor &seen, const QColor &one, const QColor &other)
{
    const auto fits = [](int channel, int first, int second) {
        return channel >= std::min(first, second) - aRow && channel <= std::max(first, second) + aRow;
    };
    return fits(seen.red(), one.red(), other.red()) && fits(seen.green(), one.green(), other.green()) &&
           fits(seen.blue(), one.blue(), other.blue());
}

QColor withAlpha(QColor color, int alpha)
{
    color.setAlpha(alpha);
    return color;
}

} // namespace

class paintingTest : public QObject
{
    Q_OBJECT

private:
    void useImage(const QImage &image) const
    {
        appearance.m_windowPixmap = m_folder.filePath(QStringLiteral("background.png"));
        QVERIFY(image.save(appearance.m_windowPixmap));
    }

    QTemporaryDir m_folder;

private slots:
    void init()
    {
        appearance = {};
        appearance.m_shadowLightColor = light;
        appearance.m_shadowDarkColor = dark;
        appearance.m_dialogBackgroundColor = background;
        appearance.m_dialogFrameColor = frame;
        appearance.m_dialogBackgroundAlphaval = 255;
    }

    void regionOfRoundedRectangle()
    {
        // Radius 4 in 12 by 12 pixels at (100, 50): the last column and row stay out.
        const char *const rows[] = {
            "..#######...", ".#########..", "###########.", "###########.", "###########.", "###########.",
            "###########.", "###########.", "###########.", "###########.", ".#########..", "............",
        };
        const QRegion region = roundRectRegion(QRect(100, 50, 12, 12), 4);
        for (int y = 0; y < 12; ++y) {
            for (int x = 0; x < 12; ++x)
                QCOMPARE(region.contains(QPoint(100 + x, 50 + y)), rows[y][x] == '#');
        }
        QCOMPARE(roundRectRegion(QRect(4, 4, 12, 12), 1), QRegion(4, 4, 11, 11));
    }

    /// Every pixel, for sizes by turns. The frame does not take part in the background's opacity, the shadows
    /// only towards the middle.
    void panel()
    {
        for (const auto &[screenWidth, alpha] : {std::pair(640, 255), {1000, 255}, {640, 200}, {640, 0}}) {
            init();
            appearance.m_desktopWidth = screenWidth;
            appearance.m_dialogBackgroundAlphaval = alpha;
            dialogUnderTest dialog;
            // New shadows reach an open dialog; frame and background are its own.
            appearance.m_shadowLightColor = QColor("#00ffff");
            appearance.m_shadowDarkColor = QColor("#ffff00");
            appearance.m_dialogBackgroundColor = appearance.m_dialogFrameColor = Qt::black;
            const QImage image = grabPanel(dialog);
            const QRect whole = image.rect();
            const QRegion outer = roundRectRegion(whole, 4);
            const QRegion inner = roundRectRegion(whole.adjusted(4, 4, -4, -4), 1);
            // A shadow over the first twentieth, one over the last.
            const int shadow = whole.height() / 20 + 2;
            const QColor even = alpha > 0 ? withAlpha(background, alpha) : QColor(0, 0, 0, 0);
            for (const auto &[y, end] : {std::pair(4, appearance.m_shadowLightColor),
                                         {whole.height() - 6, appearance.m_shadowDarkColor}})
                QVERIFY(difference(image.pixelColor(20, y), end) < difference(image.pixelColor(20, y), even));
            for (int y = 0; y < whole.height(); ++y) {
                const bool isEven = y >= shadow && y < whole.height() - shadow;
                const QColor end = y < shadow ? appearance.m_shadowLightColor : appearance.m_shadowDarkColor;
                for (int x = 0; x < whole.width(); ++x) {
                    const QColor seen = image.pixelColor(x, y);
                    if (!outer.contains(QPoint(x, y)))
                        QCOMPARE(seen.alpha(), 0);
                    else if (!inner.contains(QPoint(x, y)))
                        QCOMPARE(seen, frame);
                    else if (isEven)
                        QVERIFY(difference(seen, even) <= (alpha == 255 ? 0 : 2));
                    else
                        QVERIFY(seen.alpha() >= alpha && (alpha < 255 || isBetween(seen, end, background)));
                }
            }
        }
    }

    /// Stretched without smoothing, over the corners too; the frame that lies on it shares its opacity.
    void image()
    {
        QImage quarters(2, 2, QImage::Format_RGB32);
        for (const QPoint &at : {QPoint(0, 0), {1, 0}, {0, 1}, {1, 1}})
            quarters.setPixelColor(at, at.x() == at.y() ? light : dark);
        useImage(quarters);
        for (const int alpha : {200, 255}) {
            appearance.m_dialogBackgroundAlphaval = alpha;
            dialogUnderTest dialog;
            const QImage image = grabPanel(dialog);
            const int w = image.width();
            const int h = image.height();
            QImage edge(1, 1, QImage::Format_ARGB32_Premultiplied);
            edge.fill(Qt::transparent);
            QPainter painter(&edge);
            painter.setOpacity(alpha / 255.0);
            painter.fillRect(edge.rect(), light);
            painter.fillRect(edge.rect(), frame);
            painter.end();
            const QColor onImage = edge.pixelColor(0, 0);
            const std::tuple<int, int, QColor> pixels[] = {
                {0, 0, withAlpha(light, alpha)},         {w / 2 - 2, h / 2 - 2, withAlpha(light, alpha)},
                {w - 1, 0, withAlpha(dark, alpha)},      {w / 2 + 2, h / 2 - 2, withAlpha(dark, alpha)},
                {w - 1, h - 1, withAlpha(light, alpha)}, {1, h / 2 - 4, onImage},
            };
            for (const auto &[x, y, colour] : pixels)
                QVERIFY(difference(image.pixelColor(x, y), colour) <= 2);
        }
    }

    void brokenImage()
    {
        dialogUnderTest plain;
        useImage(QImage(10, 10, QImage::Format_RGB32));
        QVERIFY(QFile::resize(appearance.m_windowPixmap, 30));
        dialogUnderTest broken;
        QCOMPARE(grabPanel(broken), grabPanel(plain));
    }
};

QTEST_MAIN(paintingTest)
#include "paintingTest.moc"
