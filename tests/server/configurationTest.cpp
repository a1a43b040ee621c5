#include "server/handlers.h"
#include "server/receiver.h"
#include "widgets/appearance.h"

#include <QApplication>
#include <QTcpSocket>
#include <QTest>

/// What each configuration entry changes, and that it changes nothing else.
class configurationTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void startsWithTheDefaults();
    void changes_data();
    void changes();

private:
    void configure(const QByteArray &entries);

    handlers m_handlers;
    receiver m_server{0, false};
    QTcpSocket m_client;
};

namespace
{

QString text(int number)
{
    return QString::number(number);
}

QString text(const QFont &font)
{
    return QStringLiteral("%1 %2 %3%4")
        .arg(font.family(), text(font.pointSize()), text(font.weight()), font.italic() ? " italic" : "");
}

QString text(const QColor &colour)
{
    return colour.isValid() ? colour.name() : QStringLiteral("unset");
}

/// Every setting as "name value".
QStringList settings()
{
    const std::pair<const char *, QString> all[] = {
        {"desktopWidth", text(appearance.m_desktopWidth)},
        {"desktopHeight", text(appearance.m_desktopHeight)},
        {"offsetX", text(appearance.m_paintOffsetX)},
        {"offsetY", text(appearance.m_paintOffsetY)},
        {"busyX", text(appearance.m_busyXpos)},
        {"busyY", text(appearance.m_busyYpos)},
        {"busyWidth", text(appearance.m_busyWidth)},
        {"busyHeight", text(appearance.m_busyHeight)},
        {"busyPixmap", appearance.m_busyPixmap},
        {"title", appearance.m_windowTitle},
        {"pixmap", appearance.m_windowPixmap},
        {"icon", appearance.m_windowIcon},
        {"labelFont", text(appearance.m_labelFont)},
        {"barNumFont", text(appearance.m_barNumFont)},
        {"barLabelFont", text(appearance.m_barLabelFont)},
        {"buttonFont", text(appearance.m_buttonFont)},
        {"bar", text(appearance.m_barColor)},
        {"invertedNumber", text(appearance.m_invertedNumberColor)},
        {"busyBar", text(appearance.m_busyBarColor)},
        {"busyInvertedNumber", text(appearance.m_busyInvertedNumberColor)},
        {"background", text(appearance.m_dialogBackgroundColor)},
        {"frame", text(appearance.m_dialogFrameColor)},
        {"barBackground", text(appearance.m_barBackgroundColor)},
        {"busyBarBackground", text(appearance.m_busyBarBackgroundColor)},
        {"light", text(appearance.m_shadowLightColor)},
        {"dark", text(appearance.m_shadowDarkColor)},
        {"button", text(appearance.m_buttonBaseColor)},
        {"focus", text(appearance.m_focusFrameColor)},
        {"alpha", text(appearance.m_dialogBackgroundAlphaval)},
        {"modal", text(int{appearance.m_modal_dialog})},
        {"flags", QString::number(appearance.m_dialog_flags.toInt(), 16)},
    };
    QStringList lines;
    for (const auto &[name, value] : all)
        lines << QLatin1String(name) + QLatin1Char(' ') + value;
    return lines;
}

/// Another value than the defaults for everything.
const QByteArray baseline(
    "windowFonts=Arial,9|Arial,9|Arial,9|Arial,9;busyIndicator=11|12|13|14|base.png;paintOffset=15|16;"
    "screenGeometry=800,600;windowTitle=base;windowPixmap=base;"
    "windowStyle=#010101|#020202|#030303|#040404|#050505|#060606;windowControls=#070707|#080808|#090909|#"
    "0a0a0a;"
    "windowModal=on");

} // namespace

void configurationTest::initTestCase()
{
    m_client.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(m_server.getPort()));
    QVERIFY(m_client.waitForConnected());
}

void configurationTest::configure(const QByteArray &entries)
{
    // A setting that the entries leave alone tells when they have been applied.
    const bool aboutIcon = entries.startsWith("windowIcon=");
    QString &mark = aboutIcon ? appearance.m_windowTitle : appearance.m_windowIcon;
    const QString value = std::exchange(mark, QString());
    m_client.write("<configuration>" + entries + "</configuration><configuration>" +
                   (aboutIcon ? "windowTitle" : "windowIcon") + "=done</configuration>");
    QVERIFY(QTest::qWaitFor([&mark] { return mark == "done"; }));
    mark = value;
}

void configurationTest::startsWithTheDefaults()
{
    QCOMPARE(settings().join(", "),
             "desktopWidth 640, desktopHeight 480, offsetX 0, offsetY 0, busyX -1, busyY -1, busyWidth -1, "
             "busyHeight -1, busyPixmap Busy.png, title unknown, pixmap unknown, icon unknown, "
             "labelFont Arial 8 400, barNumFont Arial 10 400, barLabelFont Arial 10 400, "
             "buttonFont Arial 8 400, bar unset, invertedNumber unset, busyBar unset, "
             "busyInvertedNumber unset, background unset, frame unset, barBackground unset, "
             "busyBarBackground unset, light unset, dark unset, button unset, focus unset, alpha 200, "
             "modal 1, flags 2040c00");
}

void configurationTest::changes_data()
{
    QTest::addColumn<QByteArray>("entries");
    QTest::addColumn<QString>("changed"); // all of it, in the order of the list above, with ", " between
    const auto row = [](const char *name, const char *entries, const char *changed) {
        QTest::newRow(name) << QByteArray(entries) << QString::fromLatin1(changed);
    };

    row("separators", ";;windowTitle=x;;", "title x");
    row("values do not split", "windowTitle=A|B,C=D", "title A|B,C=D");
    row("letter case", "WindowTitle=x;windowtitle=x;WINDOWMODAL=off", "");
    row("unknown keys", "title=x;windowTitl=x;=;windowTitle", "");
    row("Latin-1", "windowTitle=\xe4\xf6", "title \xe4\xf6");

    row("non-modal", "windowModal=off", "modal 0, flags 2000800");
    row("modal in any letter case", "windowModal=off;windowModal=oN", "");

    row("geometry", "screenGeometry=1024,768,5", "desktopWidth 1024, desktopHeight 768");
    row("geometry with a bar", "screenGeometry=1024|768", "desktopWidth 0");
    row("offset", "paintOffset=-5|+7", "offsetX -5, offsetY 7");
    row("no numbers", "paintOffset=x|4.5", "offsetX 0, offsetY 0");
    row("numbers out of range", "paintOffset=2147483648|-2147483648", "offsetX 0, offsetY -32767");

    row("busy window", "busyIndicator=1|2|3|4|x.png|more",
        "busyX 1, busyY 2, busyWidth 3, busyHeight 4, busyPixmap x.png");
    row("busy image kept", "busyIndicator=1|2|0|0|empty", "busyX 1, busyY 2, busyWidth 0, busyHeight 0");
    row("busy image of no name", "busyIndicator=11|12|13|14|", "busyPixmap ");

    row("fonts", "windowFonts=Sans,7|Serif,8|Mono,9|Helvetica,10",
        "labelFont Helvetica 10 400, barNumFont Serif 8 400, barLabelFont Mono 9 400, buttonFont Sans 7 400");
    row("bold as old descriptions have it", "windowFonts=Arial,8,-1,5,75,0,0,0,0,0",
        "buttonFont Arial 8 700");
    row("light and italic as old descriptions have it", "windowFonts=Arial,8,-1,5,25,1,0,0,0,0",
        "buttonFont Arial 8 300 italic");
    row("bold as new descriptions have it", "windowFonts=Arial,8,-1,5,700,0,0,0,0,0,0,0,0,0,0,1",
        "buttonFont Arial 8 700");
    row("what a font description does not give stays",
        "windowFonts=Arial,8,-1,5,75,1,0,0,0,0;windowFonts=Serif,12;windowFonts=Mono",
        "buttonFont Mono 12 700 italic");
    row("font descriptions that cannot be read", "windowFonts=|,8|Arial,8,bold|Serif,8",
        "labelFont Serif 8 400");

    row("style", "windowStyle=#102030|white|red|#00f|#abcdef|#123456",
        "bar #102030, invertedNumber #ffffff, busyBar #ff0000, busyInvertedNumber #0000ff, background "
        "#abcdef, "
        "frame #123456, barBackground #abcdef, busyBarBackground #abcdef");
    row("colours that cannot be read", "windowStyle=#01|nocolour|#030303|#040404|#050505|#060606",
        "bar unset, invertedNumber unset");
    row("style with too few fields", "windowStyle=red|#020202|#030303|#040404|green",
        "bar #ff0000, background #008000");
    row("controls", "windowControls=red|lime|blue|white|more",
        "light #ff0000, dark #00ff00, button #0000ff, focus #ffffff");
    row("icon", "windowIcon=x.png", "icon x.png");
}

void configurationTest::changes()
{
    QFETCH(QByteArray, entries);
    QFETCH(QString, changed);
    for (QFont *font : {&appearance.m_labelFont, &appearance.m_barNumFont, &appearance.m_barLabelFont,
                        &appearance.m_buttonFont})
        *font = QFont();
    configure(baseline);
    QCOMPARE(appearance.m_dialogBackgroundAlphaval, 242);

    const QStringList before = settings();
    configure(entries);
    QStringList difference;
    const QStringList after = settings();
    for (qsizetype i = 0; i < after.size(); ++i) {
        if (after[i] != before[i])
            difference << after[i];
    }
    QCOMPARE(difference.join(", "), changed);
}

QTEST_MAIN(configurationTest)
#include "configurationTest.moc"
