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

bytes randomBytes(QRandomGenerator &random, int size)
{
    bytes text(size, Qt::Uninitialized);
    for (char &byte : text)
        byte = static_cast<char>(random.bounded(256));
    return text;
}

/// Messages with values that nobody expects.
bytes randomMessages(QRandomGenerator &random, const bytes &tag, const bytes &keywords,
                     const bytes &separator)
{
    const QByteArrayList values{"0",           "1",          "9",
                                "10",          "-1",         "-2147483648",
                                "2147483647",  "4294967296", "50",
                                "x",           " 3",         "",
                                "%p%n%s",      "<progress>", "\xff\xfe",
                                "#1",          "on",         "Arial,8",
                                "Arial,99999", "/dev/null",  bytes(2000, ';')};
    const auto oneOf = [&random](const QByteArrayList &list) {
        return list[random.bounded(int(list.size()))];
    };
    bytes text;
    for (int i = 0; i < 400; ++i) {
        text += '<' + tag + '>' + oneOf(keywords.split(' ')) + oneOf(values);
        for (int more = random.bounded(6); more > 0; --more)
            text += separator + oneOf(values);
        text += "</" + tag + '>';
    }
    return text;
}

} // namespace

void badInputTest::isSurvived_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::newRow("modal") << bytes("windowModal=on");
    QTest::newRow("non-modal") << bytes("windowModal=off");
}

/// One after the other to the same daemon, each by a client that goes then.
void badInputTest::isSurvived()
{
    QFETCH(QByteArray, mode);
    QRandomGenerator random(20240229);
    const auto randomCommands = [&random] {
        return randomMessages(random, "progress",
                              "update: create: remove: addButt: delButt: addText: updateText: "
                              "delText: busyOff messageStart messageStop",
                              ";");
    };
    const bytes wide(100'000, 'W');
    const std::pair<const char *, bytes> texts[] = {
        {"random bytes", randomBytes(random, 500'000)},
        {"random commands", randomCommands()},
        {"megabytes without a tag", bytes(17'000'000, '<')},
        {"large captions", progress("create:0;" + wide) + progress("addText:1;" + wide) +
                               progress("addButt:2;" + wide) +
                               progress("updateText:1;" + bytes(wide.size(), '\n'))},
        {"many updates", progress("update:0;1").repeated(50'000)},
        {"large message box",
         "<msgbox>1[#]" + wide + "[#]" + wide + bytes("[#]1024").repeated(1000) + "</msgbox>"},
        {"large assertion", "<assert>" + bytes("if (a < b)\n").repeated(10'000) + "</assert>"},
        {"random configuration",
         randomMessages(random, "configuration",
                        "windowFonts= busyIndicator= paintOffset= "
                        "screenGeometry= windowPixmap= windowIcon= windowStyle= windowControls=",
                        "|")},
        {"extreme places",
         "<configuration>busyIndicator=0|0|2147483647|2147483647|empty;"
         "screenGeometry=2147483647,2147483647;paintOffset=2147483647|2147483647</configuration>"},
        {"random commands with them", randomCommands()},
    };
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents(mode);
    const auto other = daemon.openCommands();
    for (const auto &[name, text] : texts) {
        const auto commands = daemon.openCommands();
        commands->send(text);
        commands->close();
        QVERIFY2(events->isServed(), name);
    }
    other->send("<exit/>");
    QVERIFY(events->hears("shutDown"));
}

void badInputTest::largeMessagesArriveWhole()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    commands->progress("create:0;" + QByteArray(15'000'000, 'x'));
    QVERIFY(events->hears("isShown"));
    for (const char byte : progress("remove:0"))
        commands->send(QByteArray(1, byte));
    QVERIFY(events->hears("isHidden"));
}

void badInputTest::clientsThatVanishHalfWay()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    // All share one buffer, so the next message ends what was begun; the one after it is carried out again.
    for (const char *half :
         {"<progress>update:0;5</progres", "<configuration>paintOffset", "<", "</progress"}) {
        const auto gone = daemon.openCommands();
        gone->send(progress("activate") + half);
        QVERIFY2(events->hears("isActivated"), half);
        gone->close();
        commands->progress("nothing");
        commands->progress("addButt:1;y");
        QVERIFY2(events->hears("isShown"), half);
        commands->progress("delButt:1");
        QVERIFY2(events->hears("isHidden"), half);
    }
}

QTEST_GUILESS_MAIN(badInputTest)
#include "badInputTest.moc"
