#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QTest>

#include <algorithm>

/// What the commands tell the event channels.
class eventsTest : public QObject
{
    Q_OBJECT

private slots:
    void commands_data();
    void commands();
    void reachEveryChannelOfTheWalk();
    void reachAChannelThatReadsLateInWholeEvents();

private:
    virtualScreen m_screen;
};

void eventsTest::commands_data()
{
    QTest::addColumn<QByteArrayList>("payloads");
    QTest::addColumn<QString>("expected"); // without the answer to the "activate" that follows
    const auto row = [](const char *name, const QByteArrayList &payloads, const char *expected) {
        QTest::newRow(name) << payloads << QString(expected);
    };

    row("a run", {"create:0;Copying", "update:0;35", "update:0;35", "remove:0"},
        "isShown totalProgress=0|-1 totalProgress=35|-1 isHidden totalProgress=0|-1");
    row("average of two bars", {"create:0;a", "create:9;b", "update:9;99", "remove:0"},
        "isShown totalProgress=0|-1 totalProgress=49|-1 totalProgress=99|-1");
    row("shown once by whatever comes first", {"addButt:3;Stop", "addText:1;one", "delButt:3", "delText:1"},
        "isShown totalProgress=0|-1 isHidden");
    row("cancelled bar", {"create:2;a", "update:2;-1"}, "isShown totalProgress=0|-1 totalProgress=100|-1");
    row("values out of range",
        {"create:0;a", "update:0;101", "update:0;-2", "update:0;2147483648", "update:0;7"},
        "isShown totalProgress=0|-1 totalProgress=7|-1");
    row("what is no number is 0", {"create:x;a", "update:x;50", "update:0;y", "remove:"},
        "isShown totalProgress=0|-1 totalProgress=50|-1 totalProgress=0|-1 isHidden");
    row("bar restarts", {"create:0;a", "update:0;60", "create:0;b"},
        "isShown totalProgress=0|-1 totalProgress=60|-1 totalProgress=0|-1");
    row("wrong number of parts", {"create:0", "create:0;a;b", "addText:1;a;b", "addButt:1"}, "");
    row("empty parts count", {"create:;", "remove:0;", "update:0;5;"}, "isShown totalProgress=0|-1");
    row("not commands", {"Create:0;x", " create:0;x", "", "creat", "activat", "create;0;x"}, "");
    row("prefix decides", {"activate now", "busyOnly", "messageStartle"}, "isActivated");
    row("slots that do not exist",
        {"create:-1;x", "create:10;x", "addText:10;x", "addButt:10;x", "remove:10", "updateText:11;x"}, "");
    row("text line over a bar", {"create:0;a", "addText:0;b", "updateText:0;c", "delText:0"},
        "isShown totalProgress=0|-1 isHidden");
    row("bar under a text line", {"addText:4;b", "create:4;a", "remove:4"},
        "isShown totalProgress=0|-1 isHidden");
    row("hiding is no end",
        {"create:0;a", "update:0;5", "messageStart", "messageStop", "activate", "messageStart", "remove:0"},
        "isShown totalProgress=0|-1 totalProgress=5|-1 isActivated isHidden totalProgress=0|-1");
}

void eventsTest::commands()
{
    QFETCH(QByteArrayList, payloads);
    QFETCH(QString, expected);
    for (const char *mode : {"", "windowModal=off"}) {
        daemonProcess daemon(m_screen);
        const auto events = daemon.openEvents(mode);
        const auto commands = daemon.openCommands();
        for (const QByteArray &payload : payloads)
            commands->progress(payload);
        commands->send("<progress>activate</progress><exit/>");
        QStringList received = events->eventsUntil("shutDown").split(' ');
        // In the non-modal mode the dialog is replaced by a copy that has not averaged its bars yet: the
        // first average may come twice.
        const auto isRepeated = [](const QString &one, const QString &next) {
            return one == next && one.startsWith("totalProgress=");
        };
        if (*mode)
            received.erase(std::unique(received.begin(), received.end(), isRepeated), received.end());
        QCOMPARE(received.join(' '), (expected + " isActivated shutDown").trimmed());
    }
}

void eventsTest::reachEveryChannelOfTheWalk()
{
    daemonProcess daemon(m_screen);
    const auto keepsItRunning = daemon.openCommands();
    const auto commands = daemon.openCommands();
    auto first = daemon.openEvents();
    const auto second = daemon.openEvents();
    commands->progress("create:0;x");
    QVERIFY(first->hears("totalProgress=0|-1"));
    QVERIFY(second->hears("totalProgress=0|-1"));

    // Slot 0 is empty: the walk ends there, until a new channel fills it.
    first->close();
    commands->progress("update:0;50");
    commands->close();
    first = std::make_unique<clientChannel>(daemon.eventPort());
    QVERIFY(first->isServed());
    QCOMPARE(second->eventsUntil("isActivated"), "isActivated");
}

void eventsTest::reachAChannelThatReadsLateInWholeEvents()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    const auto lazy = daemon.openEvents();
    lazy->setReadBufferSize(1);

    // 20 MB of events; with the sockets' own buffers, less than that fits on the way to the lazy one.
    commands->progress("create:0;x");
    constexpr int rounds = 400;
    const QByteArray burst =
        QByteArray("<progress>update:0;1</progress><progress>update:0;2</progress>").repeated(500);
    QVERIFY(events->hears("totalProgress=0|-1"));
    for (int round = 0; round < rounds; ++round) {
        commands->send(burst + "<progress>activate</progress>");
        QCOMPARE(events->eventsUntil("isActivated").count(' '), 1000);
    }
    lazy->setReadBufferSize(0);
    const auto hasCaughtUp = [&] {
        commands->send("<progress>remove:0</progress><progress>create:0;x</progress>");
        return lazy->pending().contains("isHidden");
    };
    QTRY_VERIFY_WITH_TIMEOUT(hasCaughtUp(), patienceMs);
    const QStringList received = lazy->eventsUntil("isHidden").split(' ');
    for (const QString &event : received)
        QVERIFY2(event.startsWith("totalProgress=") || event.startsWith("is"), qPrintable(event));
    QVERIFY2(received.size() < rounds * 1000, "it has missed events");
}

QTEST_GUILESS_MAIN(eventsTest)
#include "eventsTest.moc"
