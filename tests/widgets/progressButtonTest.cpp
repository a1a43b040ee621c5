#include "widgets/progressButton.h"
#include "widgets/appearance.h"

#include <QImage>
#include <QTest>

namespace
{

constexpr QRgb black = 0xff000000;
constexpr QRgb base = 0xff00c000;

QImage grabButton(QSize size, const QString &caption = {})
{
    progressButton button(nullptr);
    button.resize(size);
    button.setText(caption);
    return button.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

/// Beside the left outline, where no caption reaches.
QRgb bodyOf(const QImage &button)
{
    return button.pixel(6, button.height() / 2);
}

} // namespace

class progressButtonTest : public QObject
{
    Q_OBJECT

private slots:
    /// Colours that can be told apart, and a shared cache that was built for a size of no test.
    void init()
    {
        appearance.m_shadowLightColor = QColor("#ffffff");
        appearance.m_shadowDarkColor = QColor("#404040");
        appearance.m_buttonBaseColor = QColor(base);
        grabButton({13, 17});
    }

    /// Sizes by turns, of which one side stays.
    void geometry()
    {
        for (const QSize size : {QSize(100, 40), QSize(60, 40), QSize(60, 30), QSize(100, 40)}) {
            const QImage image = grabButton(size);
            const int w = size.width();
            const int h = size.height();
            const QRgb outside = progressButton(nullptr).palette().color(QPalette::Window).rgb();
            // Frame and black outline from each edge; the right and the lower one are a pixel thinner.
            for (const int x : {0, 3, 5, w - 6, w - 4, w - 1})
                QCOMPARE(image.pixel(x, h / 2), base);
            for (const int y : {0, 3, h - 4, h - 1})
                QCOMPARE(image.pixel(w / 2, y), base);
            for (const QPoint &edge : {QPoint(4, h / 2), {w - 5, h / 2}, {w / 2, 4}, {w / 2, h - 5}})
                QCOMPARE(image.pixel(edge), black);
            // All corners are round: there is the dialog around the frame's, and frame around the body's.
            for (const QPoint &corner : {QPoint(0, 0), {w - 1, 0}, {0, h - 1}, {w - 1, h - 1}})
                QCOMPARE(image.pixel(corner), outside);
            for (const QPoint &corner : {QPoint(4, 4), {w - 5, 4}, {4, h - 5}, {w - 5, h - 5}})
                QCOMPARE(image.pixel(corner), base);
        }
    }

    /// It runs from row 6 to row 206: a fifth of it to the base colour, a fifth from it.
    void gradientStops()
    {
        const QImage image = grabButton({40, 212});
        const std::pair<int, int> reds[] = {{5, 255}, {26, 124}, {46, 0}, {106, 0}, {165, 0}, {206, 0x40}};
        for (const auto &[y, red] : reds)
            QVERIFY(qAbs(qRed(image.pixel(20, y)) - red) <= 4);
        QVERIFY(qRed(image.pixel(20, 44)) > 0 && qRed(image.pixel(20, 168)) > 0);
    }

    void caption()
    {
        const QSize size(100, 40);
        const QImage empty = grabButton(size);
        const auto columnsOf = [&](const QString &caption) {
            const QImage image = grabButton(size, caption);
            QList<int> columns;
            for (int x = 0; x < size.width(); ++x) {
                if (image.copy(x, 0, 1, size.height()) != empty.copy(x, 0, 1, size.height()))
                    columns << x;
            }
            return columns;
        };
        // It ends one column short of the outline.
        const QList<int> full = columnsOf(QString(100, 'M'));
        QVERIFY(full.size() > 80 && full.first() >= 4 && full.last() <= 94);
        // Four characters wide; as mark-up for a shortcut it would be two.
        const QList<int> literal = columnsOf("&&&&");
        QVERIFY(literal.last() - literal.first() >
                3 * progressButton(nullptr).fontMetrics().horizontalAdvance('&'));
    }

    void newColoursReachTheFrameAtOnceTheBodyWithTheSize()
    {
        const QSize size(100, 40);
        grabButton(size);
        constexpr QRgb now = 0xff0000c0;
        appearance.m_buttonBaseColor = QColor(now);
        // Another button of that size shares what was built for it.
        QCOMPARE(grabButton(size).pixel(1, size.height() / 2), now);
        QCOMPARE(bodyOf(grabButton(size)), base);
        QCOMPARE(bodyOf(grabButton({60, 30})), now);
        QCOMPARE(bodyOf(grabButton(size)), now);
    }
};

QTEST_MAIN(progressButtonTest)
#include "progressButtonTest.moc"
