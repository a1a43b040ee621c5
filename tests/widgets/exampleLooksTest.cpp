#include <QApplication>
#include <QFile>
#include <QFont>
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

QMap<QString, QStringList> readLook(const QString &path)
{
    QMap<QString, QStringList> entries;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return entries;
    while (!file.atEnd()) {
        const QString line = QString::fromLatin1(file.readLine()).chopped(1);
        if (!line.startsWith(QLatin1Char('#')))
            entries[line.section(QLatin1Char('='), 0, 0)] =
                line.section(QLatin1Char('='), 1).split(QLatin1Char('|'));
    }
    return entries;
}

} // namespace

class exampleLooksTest : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
    }

private slots:
    void textIsReadable_data();
    void textIsReadable();
};

void exampleLooksTest::textIsReadable_data()
{
    QTest::addColumn<QString>("path");
    for (const char *name : {"light", "dark"})
        QTest::newRow(name) << QStringLiteral(EXAMPLES "/%1.conf").arg(QLatin1String(name));
}

void exampleLooksTest::textIsReadable()
{
    QFETCH(QString, path);
    const QMap<QString, QStringList> look = readLook(path);
    QCOMPARE(look.keys(), QStringList({QStringLiteral("windowControls"), QStringLiteral("windowFonts"),
                                       QStringLiteral("windowStyle")}));
    const auto colors = [&](const char *key, int count) {
        QList<QColor> list;
        for (const QString &field : look[QLatin1String(key)])
            list += QColor(field);
        return list.size() == count ? list : QList<QColor>(count);
    };
    const QList<QColor> style = colors("windowStyle", 6);
    const QList<QColor> controls = colors("windowControls", 4);
    for (const QColor &color : style + controls)
        QVERIFY(color.isValid());
    const QStringList fonts = look[QStringLiteral("windowFonts")];
    QCOMPARE(fonts.size(), 4);
    for (const QString &font : fonts)
        QVERIFY(QFont().fromString(font));

    constexpr double readable = 4.5;
    const QPalette palette = QApplication::palette();
    QVERIFY(contrast(style[1], style[0]) >= readable); // bar label on the fill
    QVERIFY(contrast(style[3], style[2]) >= readable); // the same on the busy bar
    QVERIFY(contrast(palette.color(QPalette::Text), style[4]) >= readable);
    QVERIFY(contrast(palette.color(QPalette::WindowText), style[4]) >= readable);
    QVERIFY(contrast(palette.color(QPalette::WindowText), overBlack(style[4])) >= readable);
    QVERIFY(contrast(Qt::black, controls[2]) >= readable); // button caption
    // What is no text needs less.
    constexpr double visible = 3;
    QVERIFY(contrast(style[0], style[4]) >= visible);    // fill and rest of a bar
    QVERIFY(contrast(controls[3], style[4]) >= visible); // focus frame and panel
}

QTEST_MAIN(exampleLooksTest)
#include "exampleLooksTest.moc"
