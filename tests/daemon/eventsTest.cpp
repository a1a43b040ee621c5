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
    void followEachOtherDirectly();
    void reachEveryChannelOfTheWalk();
    void reachAChannelThatReadsLateInWholeEvents();
    void goOnWithoutAReader();

private:
    virtualScreen m_screen;
};

void eventsTest::commands_data()
{
    QTest::addColumn<QByteArrayList>("payloads");
    QTest::addColumn<QString>("expected");

    QTest::newRow("a run")
        << QByteArrayList{"create:0;Copying", "update:0;35", "update:0;35", "remove:0"}
        << QString("isShown totalProgress=0|-1 totalProgress=35|-1 isHidden totalProgress=0|-1");
    QTest::newRow("average of two bars")
        << QByteArrayList{"create:0;a", "create:9;b", "update:9;99", "remove:0"}
        << QString("isShown totalProgress=0|-1 totalProgress=49|-1 totalProgress=99|-1");
    QTest::newRow("shown once by whatever comes first")
        << QByteArrayList{"addButt:3;Stop", "addText:1;one", "delButt:3", "delText:1"}
        << QString("isShown totalProgress=0|-1 isHidden");
    QTest::newRow("cancelled bar") << QByteArrayList{"create:2;a", "update:2;-1"}
                                   << QString("isShown totalProgress=0|-1 totalProgress=100|-1");
    QTest::newRow("values out of range")
        << QByteArrayList{"create:0;a", "update:0;101", "update:0;-2", "update:0;2147483648", "update:0;7"}
        << QString("isShown totalProgress=0|-1 totalProgress=7|-1");
    QTest::newRow("what is no number is 0")
        << QByteArrayList{"create:x;a", "update:x;50", "update:0;y", "remove:"}
        << QString("isShown totalProgress=0|-1 totalProgress=50|-1 totalProgress=0|-1 isHidden");
    QTest::newRow("bar restarts") << QByteArrayList{"create:0;a", "update:0;60", "create:0;b"}
                                  << QString(
                                         "isShown totalProgress=0|-1 totalProgress=60|-1 totalProgress=0|-1");
    QTest::newRow("wrong number of parts")
        << QByteArrayList{"create:0",  "create:0;a;b", "addText:1;a;b", "addButt:1",   "create:;",
                          "remove:0;", "update:0",     "update:0;5;",   "updateText:0"}
        << QString("isShown totalProgress=0|-1");
    QTest::newRow("not commands") << QByteArrayList{"Create:0;x", " create:0;x", "", "creat", "activat",
                                                    "create;0;x", "messagestart"}
                                  << QString();
    QTest::newRow("prefix decides") << QByteArrayList{"activate now", "busyOnly", "messageStartle"}
                                    << QString("isActivated");
    QTest::newRow("slots that do not exist")
        << QByteArrayList{"create:-1;x",  "create:10;x",         "addText:10;x",
                          "addButt:10;x", "create:2147483647;x", "addText:-2147483648;x",
                          "remove:10",    "delButt:-1",          "updateText:11;x"}
        << QString();
    QTest::newRow("text line over a bar")
        << QByteArrayList{"create:0;a", "addText:0;b", "updateText:0;c", "delText:0"}
        << QString("isShown totalProgress=0|-1 isHidden");
    QTest::newRow("bar under a text line") << QByteArrayList{"addText:4;b", "create:4;a", "remove:4"}
                                           << QString("isShown totalProgress=0|-1 isHidden");
    QTest::newRow("hiding is no end")
        << QByteArrayList{"create:0;a", "update:0;5",   "messageStart", "messageStop",
                          "activate",   "messageStart", "remove:0"}
        << QString("isShown totalProgress=0|-1 totalProgress=5|-1 isActivated isHidden totalProgress=0|-1");
}

void eventsTest::commands()
{
    QFETCH(QByteArrayList, payloads);
    QFETCH(QString, expected);
    for (const QByteArray &mode : {QByteArray(), QByteArray("windowModal=off")}) {
        daemonProcess daemon(m_screen);
        const auto events = daemon.openEvents(mode);
        const auto commands = daemon.openCommands();
        for (const QByteArray &payload : payloads)
            commands->progress(payload);
        commands->send("<progress>activate</progress><exit/>");
        QStringList received = events->eventsUntil("shutDown").split(' ');
        // In the non-modal mode the dialog is replaced by a copy that has not averaged its bars yet: the
        // first average may come twice.
        if (!mode.isEmpty())
            received.erase(std::unique(received.begin(), received.end(),
                                       [](const QString &one, const QString &next) {
                                           return one == next && one.startsWith("totalProgress=");
                                       }),
                           received.end());
        QCOMPARE(received.join(' '), (expected + " isActivated shutDown").trimmed());
    }
}

void eventsTest::followEachOtherDirectly()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    commands->send("<progress>activate</progress><progress>activate</progress>");
    const QByteArray expected("<event>isActivated</event><event>isActivated</event>");
    QCOMPARE(events->read(expected.size()), expected);
    QCOMPARE(events->pending(), QByteArray());
}

void eventsTest::reachEveryChannelOfTheWalk()
{
    daemonProcess daemon(m_screen);
    const auto keepsItRunning = daemon.openCommands();
    const auto commands = daemon.openCommands();
    auto first = daemon.openEvents();
    const auto second = daemon.openEvents();
    first->eventsUntil("isActivated"); // the second one's
    commands->progress("create:0;x");
    QVERIFY(first->eventsUntil("isShown").endsWith("isShown"));
    QVERIFY(second->eventsUntil("isShown").endsWith("isShown"));
    second->eventsUntil("totalProgress=0|-1");

    // Slot 0 is empty: the walk ends there, until a new channel fills it.
    first->close();
    commands->progress("update:0;50");
    commands->close();
    first = std::make_unique<clientChannel>(daemon.eventPort());
    QVERIFY(first->isServed());
    QCOMPARE(second->eventsUntil("isActivated"), "isActivated");
    QVERIFY(second->isServed());
}

void eventsTest::reachAChannelThatReadsLateInWholeEvents()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    const auto lazy = std::make_unique<clientChannel>(daemon.eventPort());
    QVERIFY(lazy->isServed());
    events->eventsUntil("isActivated");
    lazy->setReadBufferSize(1);

    // 20 MB of events; with the sockets' own buffers, less than that fits on the way to the lazy one.
    commands->progress("create:0;x");
    constexpr int rounds = 400;
    QByteArray burst;
    for (int i = 0; i < 500; ++i)
        burst += "<progress>update:0;1</progress><progress>update:0;2</progress>";
    QString received = events->eventsUntil("totalProgress=0|-1");
    for (int round = 0; round < rounds; ++round) {
        commands->send(burst + "<progress>activate</progress>");
        received = events->eventsUntil("isActivated");
        QCOMPARE(received.count(' '), 1000);
    }
    lazy->setReadBufferSize(0);
    received = lazy->eventsUntil("totalProgress=0|-1");
    commands->send("<exit/>");
    received = lazy->eventsUntil("shutDown");
    for (const QString &event : received.split(' '))
        QVERIFY2(event.startsWith("totalProgress=") || event == "isActivated" || event == "shutDown",
                 qPrintable(event));
    QVERIFY2(received.count(' ') < rounds * 1000, "it has missed events");
}

void eventsTest::goOnWithoutAReader()
{
    daemonProcess daemon(m_screen);
    const auto commands = daemon.openCommands();
    commands->progress("create:0;x");
    clientChannel gone(daemon.eventPort());
    QVERIFY(gone.isServed());
    gone.close();
    for (int i = 0; i < 2000; ++i)
        commands->progress("update:0;" + QByteArray::number(i % 100));
    const auto events = daemon.openEvents();
    QVERIFY(events->isServed());
}

QTEST_GUILESS_MAIN(eventsTest)
#include "eventsTest.moc"
