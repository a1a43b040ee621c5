#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QRandomGenerator>
#include <QTest>

/// Whatever a client sends, the others are served. (A daemon that crashes fails the test by itself.)
class badInputTest : public QObject
{
    Q_OBJECT

private slots:
    void isSurvived_data();
    void isSurvived();
    void largeMessagesArriveWhole();
    void clientsThatVanishHalfWay();

private:
    virtualScreen m_screen;
};

namespace
{

using bytes = QByteArray;

bytes progress(const bytes &command)
{
    return "<progress>" + command + "</progress>";
}

bytes randomBytes(QRandomGenerator &random, qsizetype size)
{
    bytes text(size, Qt::Uninitialized);
    for (char &byte : text)
        byte = static_cast<char>(random.bounded(256));
    return text;
}

/// Commands with arguments that nobody expects.
bytes randomCommands(QRandomGenerator &random, int count)
{
    const bytes keywords[] = {
        "update:",     "create:", "remove:",      "addButt:",    "delButt:", "addText:", "delText:", "busyOn",
        "updateText:", "busyOff", "messageStart", "messageStop", "activate", "create;:", ""};
    const bytes arguments[] = {
        "0",   "1", "9",  "10",  "-1",  "-2147483648", "2147483647", "4294967296", "99999999999999999999", "",
        " 3 ", "x", "50", "100", "101", "%p%n%s",      "<progress>", "\xff\xfe",   bytes(300, ';')};
    const auto oneOf = [&random](const auto &list) { return list[random.bounded(int(std::size(list)))]; };
    bytes text;
    for (int i = 0; i < count; ++i)
        text += progress(oneOf(keywords) + oneOf(arguments) + ';' + oneOf(arguments));
    return text;
}

bytes randomConfiguration(QRandomGenerator &random, int count)
{
    const bytes keys[] = {
        "windowFonts=",  "busyIndicator=", "paintOffset=", "screenGeometry=", "windowTitle=",
        "windowPixmap=", "windowIcon=",    "windowStyle=", "windowControls=", "windowModal="};
    const bytes fields[] = {"0",    "-1", "100",     "2147483647",    "-2147483648", "red",
                            "#12",  "",   "Arial,8", "Arial,99999",   ",,,,,,,,,",   "/dev/null",
                            "/etc", "on", "off",     bytes(2000, 'x')};
    const auto oneOf = [&random](const auto &list) { return list[random.bounded(int(std::size(list)))]; };
    bytes text;
    for (int i = 0; i < count; ++i) {
        text += "<configuration>" + oneOf(keys);
        for (int field = random.bounded(8); field > 0; --field)
            text += oneOf(fields) + (random.bounded(4) ? '|' : ',');
        text += oneOf(fields) + "</configuration>";
        text += "<!-- handled before the next one -->";
    }
    return text;
}

} // namespace

void badInputTest::isSurvived_data()
{
    QTest::addColumn<QByteArray>("text");
    QRandomGenerator random(20240229);
    QTest::newRow("random bytes") << randomBytes(random, 2'000'000);
    bytes tags;
    for (int i = 0; i < 3000; ++i) {
        const char *kinds[] = {"<progress>", "</progress>", "<configuration>", "</configuration>",
                               "</assert>",  "</msgbox>",   "<prog",           "ress>",
                               "<exit>",     "exit/>"};
        tags += kinds[random.bounded(10)] + randomBytes(random, random.bounded(20));
    }
    QTest::newRow("random tags") << tags.replace("<exit/>", "");
    QTest::newRow("random commands") << randomCommands(random, 3000);
    QTest::newRow("megabytes without a tag") << bytes(40'000'000, '<');
    QTest::newRow("only opening tags") << bytes("<progress>").repeated(1'000'000);
    QTest::newRow("only closing tags") << bytes("</progress>").repeated(1'000'000);
    QTest::newRow("large captions") << progress("create:0;" + bytes(100'000, 'W')) +
                                           progress("addText:1;" + bytes(100'000, 'W')) +
                                           progress("addButt:2;" + bytes(100'000, 'W')) +
                                           progress("updateText:1;" + bytes(100'000, '\n'));
    QTest::newRow("100,000 updates") << progress("create:0;x") + progress("update:0;1").repeated(100'000);
    QTest::newRow("large message box") << "<msgbox>1[#]" + bytes(100'000, 'W') + "[#]" + bytes(100'000, 'W') +
                                              "[#]" + bytes("1024[#]").repeated(1000) + "</msgbox>";
    QTest::newRow("large assertion") << "<assert>" + bytes("if (a < b)\n").repeated(10'000) + "</assert>";
    for (const char *mode : {"on", "off"}) {
        QTest::addRow("random configuration, windowModal=%s", mode)
            << randomConfiguration(random, 300) + "<configuration>windowModal=" + mode +
                   ";busyIndicator=0|0|2147483647|2147483647|empty;screenGeometry=2147483647,2147483647;"
                   "paintOffset=2147483647|2147483647</configuration>" +
                   randomCommands(random, 300);
    }
}

void badInputTest::isSurvived()
{
    QFETCH(QByteArray, text);
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto other = daemon.openCommands();
    const auto commands = daemon.openCommands();
    commands->send(text);
    commands->close();
    QVERIFY(events->isServed());
    other->send("<exit/>");
    QVERIFY(events->eventsUntil("shutDown").endsWith("shutDown"));
}

void badInputTest::largeMessagesArriveWhole()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    // In pieces, with others' messages between them. Their kind comes later in the order.
    commands->progress("create:0;" + QByteArray(15'000'000, 'x'));
    QVERIFY(events->eventsUntil("isShown").endsWith("isShown"));
    for (const char byte : QByteArrayLiteral("<progress>remove:0</progress>"))
        commands->send(QByteArray(1, byte));
    QVERIFY(events->eventsUntil("isHidden").endsWith("isHidden"));
}

void badInputTest::clientsThatVanishHalfWay()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    // All share one buffer, so the next message ends what was begun; the one after it is carried out again.
    for (const char *half : {"<progress>update:0;5", "<progress>update:0;5</progres",
                             "<configuration>paintOffset", "<msgbox>1[#]a", "<", "</progress"}) {
        const auto gone = daemon.openCommands();
        gone->send(QByteArray("<progress>activate</progress>") + half);
        QVERIFY2(events->eventsUntil("isActivated").endsWith("isActivated"), half);
        gone->close();
        commands->progress("nothing");
        commands->progress("addButt:1;y");
        QVERIFY2(events->eventsUntil("isShown").endsWith("isShown"), half);
        commands->progress("delButt:1");
        QVERIFY2(events->eventsUntil("isHidden").endsWith("isHidden"), half);
    }
}

QTEST_GUILESS_MAIN(badInputTest)
#include "badInputTest.moc"
