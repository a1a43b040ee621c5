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
    void framesPerServer();

private:
    virtualScreen m_screen;
};

void channelsTest::refusesTheEleventhChannel()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    std::vector<std::unique_ptr<clientChannel>> channels;
    channels.reserve(10);
    for (int i = 0; i < 10; ++i)
        channels.push_back(daemon.openCommands());
    QVERIFY(daemon.openCommands()->waitForClosed());

    // The last of the ten is served, and so is one that takes the place of another.
    channels.back()->progress("create:0;x");
    QVERIFY(events->hears("isShown"));
    channels[4]->close();
    channels[4] = daemon.openCommands();
    channels[4]->progress("remove:0");
    QVERIFY(events->hears("isHidden"));
}

void channelsTest::servesAfterTenClientsHaveComeAndGone()
{
    daemonProcess daemon(m_screen, {"0"});
    const auto events = daemon.openEvents();
    // Two at a time: the one in slot 1 comes first and goes last, so that new slots are used up.
    for (int i = 0; i < 25; ++i) {
        const auto first = daemon.openCommands();
        const auto second = daemon.openCommands();
        first->close();
        second->progress("activate");
        QVERIFY2(events->hears("isActivated"), qPrintable(QStringLiteral("client %1").arg(i)));
    }
}

void channelsTest::framesPerServer()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    const auto commands = daemon.openCommands();
    events->send("<progress>create:0;");
    // What stands behind a zero byte is dropped.
    commands->send(QByteArray("<progress>create:1;x</progress>\0<progress>create:2;y</progress>", 63));
    QVERIFY(events->hears("isShown"));
    events->send("x</progress>");
    // Two bars, neither one nor three.
    commands->progress("update:1;50");
    QVERIFY(events->hears("totalProgress=25|-1"));
}

QTEST_GUILESS_MAIN(channelsTest)
#include "channelsTest.moc"
