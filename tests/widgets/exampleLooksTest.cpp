#include <QApplication>
#include <QFile>
#include <QMap>
#include <QPalette>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace
{

double luminance(const QColor &color)
{
    const auto linear = [](double v) {
        return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// Contrast as the Web Content Accessibility Guidelines define it, 1 to 21.
double contrast(const QColor &a, const QColor &b)
{
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

/// The panel's colour on a screen without a compositor, or on a black desktop: 242/255 of its own.
QColor overBlack(const QColor &color)
{
    constexpr double opacity = 242 / 255.0;
    return QColor::fromRgbF(float(color.redF() * opacity), float(color.greenF() * opacity),
                            float(color.blueF() * opacity));
}

} // namespace

class exampleLooksTest : public QObject
{
    Q_OBJECT

private slots:
    void textIsReadable_data();
    void textIsReadable();
};

void exampleLooksTest::textIsReadable_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("light") << EXAMPLES "/light.conf";
    QTest::newRow("dark") << EXAMPLES "/dark.conf";
}

void exampleLooksTest::textIsReadable()
{
    QFETCH(QString, path);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QMap<QString, QList<QColor>> look;
    for (const QString &line : QString::fromLatin1(file.readAll()).split('\n')) {
        for (const QString &field : line.section('=', 1).split('|'))
            look[line.section('=', 0, 0)] << QColor(field);
    }
    const QList<QColor> style = look["windowStyle"];
    const QList<QColor> controls = look["windowControls"];
    QCOMPARE(look["windowFonts"].size(), 4);
    QCOMPARE(style.size(), 6);
    QCOMPARE(controls.size(), 4);
    QVERIFY(!(style + controls).contains(QColor()));

    constexpr double readable = 4.5;
    const QPalette palette = QApplication::palette();
    QVERIFY(contrast(style[1], style[0]) >= readable); // bar label on the fill
    QVERIFY(contrast(style[3], style[2]) >= readable); // the same on the busy bar
    QVERIFY(contrast(palette.color(QPalette::Text), style[4]) >= readable);
    QVERIFY(contrast(palette.color(QPalette::WindowText), overBlack(style[4])) >= readable);
    QVERIFY(contrast(Qt::black, controls[2]) >= readable); // button caption
    // What is no text needs less.
    constexpr double visible = 3;
    QVERIFY(contrast(style[0], style[4]) >= visible);    // fill and rest of a bar
    QVERIFY(contrast(controls[3], style[4]) >= visible); // focus frame and panel
}

QTEST_MAIN(exampleLooksTest)
#include "exampleLooksTest.moc"
