#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QTest>

/// Many clients, few clients, and text that arrives in odd pieces.
class channelsTest : public QObject
{
    Q_OBJECT

private slots:
    void refusesTheEleventhChannel();
    void servesAfterTenClientsHaveComeAndGone();
    void joinsAMessageThatIsSplit();
    void dropsWhatStandsBehindAZeroByte();
    void keepsTheBuffersOfTheServersApart();

private:
    virtualScreen m_screen;
};

void channelsTest::refusesTheEleventhChannel()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    std::vector<std::unique_ptr<clientChannel>> channels;
    for (int i = 0; i < 10; ++i)
        channels.push_back(daemon.openCommands());
    QVERIFY(daemon.openCommands()->waitForClosed());

    // The last of the ten is served, and so is one that takes the place of another.
    channels.back()->progress("create:0;x");
    QVERIFY(events->eventsUntil("isShown").endsWith("isShown"));
    channels[4]->close();
    channels[4] = daemon.openCommands();
    channels[4]->progress("remove:0");
    QVERIFY(events->eventsUntil("isHidden").endsWith("isHidden"));
    QVERIFY(daemon.openCommands()->waitForClosed());
}

void channelsTest::servesAfterTenClientsHaveComeAndGone()
{
    daemonProcess daemon(m_screen, {QStringLiteral("0")});
    const auto events = daemon.openEvents();
    // Two at a time: the one in slot 1 comes first and goes last, so that new slots are used up.
    for (int i = 0; i < 25; ++i) {
        auto first = daemon.openCommands();
        const auto second = daemon.openCommands();
        first->close();
        second->progress("activate");
        QVERIFY2(events->eventsUntil("isActivated").endsWith("isActivated"),
                 qPrintable(QStringLiteral("client %1").arg(i)));
    }
}

void channelsTest::joinsAMessageThatIsSplit()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    commands->send("<progress>create:0;x</prog");
    QVERIFY(events->isServed());
    commands->send("ress><progress>activate</progress>");
    QCOMPARE(events->eventsUntil("isActivated"), "isShown totalProgress=0|-1 isActivated");
}

void channelsTest::dropsWhatStandsBehindAZeroByte()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    commands->send(QByteArray("<progress>create:0;x</progress>\0<progress>create:1;y</progress>", 63));
    QCOMPARE(events->eventsUntil("totalProgress=0|-1"), "isShown totalProgress=0|-1");
    // Had the second bar come into being, the average would be 50.
    commands->progress("update:0;100");
    QCOMPARE(events->eventsUntil("totalProgress=100|-1"), "totalProgress=100|-1");
}

void channelsTest::keepsTheBuffersOfTheServersApart()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    events->send("<progress>create:0;");
    commands->send("<progress>create:1;x</progress>");
    QVERIFY(events->eventsUntil("isShown").endsWith("isShown"));
    events->send("x</progress>");
    // Two bars, not one: the half message was still there.
    commands->progress("update:1;100");
    QVERIFY(events->isServed());
    commands->progress("update:1;50");
    QVERIFY(events->eventsUntil("totalProgress=25|-1").endsWith("totalProgress=25|-1"));
}

QTEST_GUILESS_MAIN(channelsTest)
#include "channelsTest.moc"
