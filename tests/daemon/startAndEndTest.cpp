#include "tests/support/daemonLog.h"
#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QFile>
#include <QTcpServer>
#include <QTest>

/// Ports, lock file, and the ways in which the daemon ends or does not.
class startAndEndTest : public QObject
{
    Q_OBJECT

private slots:
    void endsOnExit_data();
    void endsOnExit();
    void endsWithItsLastClient();
    void staysForAClientThatIsAboutToBeAccepted();
    void staysWithABasePort_data();
    void staysWithABasePort();
    void ignoresTheBasePortOfLongerCommandLines();
    void reportsAPortThatIsTaken();
    void replacesALeftOverLockFile();
    void leavesItsFilesInOrderWithoutXServer();

private:
    static bool endedInOrder(daemonProcess &daemon);

    virtualScreen m_screen;
};

namespace
{

/// A port that is free, as is the one after it.
quint16 freeBasePort()
{
    for (;;) {
        QTcpServer first;
        QTcpServer second;
        if (first.listen(QHostAddress::AnyIPv4) && first.serverPort() < 65535 &&
            second.listen(QHostAddress::AnyIPv4, static_cast<quint16>(first.serverPort() + 1)))
            return first.serverPort();
    }
}

bool contentOf(const QString &path, QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    content = file.readAll();
    return true;
}

} // namespace

bool startAndEndTest::endedInOrder(daemonProcess &daemon)
{
    if (daemon.waitForEnd() != 0 || QFile::exists(daemon.lockFile()))
        return false;
    for (const QString &file : daemon.statisticsFiles()) {
        QByteArray statistics;
        if (contentOf(file, statistics))
            return statistics == "fileversion=2\n";
    }
    return false;
}

void startAndEndTest::endsOnExit_data()
{
    QTest::addColumn<bool>("onEventChannel");
    QTest::newRow("command channel") << false;
    QTest::newRow("event channel") << true;
}

void startAndEndTest::endsOnExit()
{
    QFETCH(bool, onEventChannel);
    daemonProcess daemon(m_screen);
    QVERIFY(daemon.commandPort() != 0 && daemon.eventPort() != 0);
    QByteArray lock;
    QVERIFY(contentOf(daemon.lockFile(), lock));
    QCOMPARE(lock,
             QByteArray::number(daemon.commandPort()) + '\n' + QByteArray::number(daemon.eventPort()) + '\n');

    const auto commands = daemon.openCommands();
    const auto events = daemon.openEvents();
    const daemonLog log;
    // In the same write as the exit, and behind it: everything else comes first.
    (onEventChannel ? events : commands)->send("<progress>create:0;x</progress><exit/>");
    QCOMPARE(events->eventsUntil("shutDown"), "isShown totalProgress=0|-1 shutDown");
    QVERIFY(events->waitForClosed());
    QCOMPARE(events->pending(), QByteArray());
    QVERIFY(commands->waitForClosed());
    QVERIFY(endedInOrder(daemon));
    QVERIFY(log.contains(": ---- got exit command by client! result=0000\n"));
    QVERIFY(log.contains(": ---- saving statistic data with entry count result=0000\n"));
}

void startAndEndTest::endsWithItsLastClient()
{
    daemonProcess daemon(m_screen);
    const auto first = daemon.openCommands();
    const auto second = daemon.openCommands();
    auto firstEvents = daemon.openEvents();
    const auto events = daemon.openEvents();
    const daemonLog log;
    first->close();
    // Event channels neither end the daemon nor keep it. (Slot 0 is filled again, so the walk goes on.)
    firstEvents->close();
    firstEvents = daemon.openEvents();
    QVERIFY(events->isServed());
    QVERIFY(daemon.isRunning());
    second->abort();
    QVERIFY(firstEvents->eventsUntil("shutDown").endsWith("shutDown"));
    QVERIFY(endedInOrder(daemon));
    QVERIFY(log.contains(": ---- doing exit by last closed connection! result=0000\n"));
}

void startAndEndTest::staysForAClientThatIsAboutToBeAccepted()
{
    daemonProcess daemon(m_screen);
    const auto events = daemon.openEvents();
    auto commands = daemon.openCommands();
    for (int i = 0; i < 50; ++i) {
        auto next = daemon.openCommands();
        commands->close();
        commands = std::move(next);
        QVERIFY2(events->isServed(), qPrintable(QStringLiteral("client %1").arg(i)));
    }
}

void startAndEndTest::staysWithABasePort_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<bool>("exactPorts");
    QTest::newRow("base port") << QString::number(freeBasePort()) << true;
    QTest::newRow("low 16 bits count") << QString::number(freeBasePort() + 65536) << true;
    QTest::newRow("base 0") << QStringLiteral("0") << false;
    QTest::newRow("base 1") << QStringLiteral("1") << false;
    QTest::newRow("no number") << QStringLiteral("port") << false;
}

void startAndEndTest::staysWithABasePort()
{
    QFETCH(QString, base);
    QFETCH(bool, exactPorts);
    daemonProcess daemon(m_screen, {base});
    if (exactPorts) {
        QCOMPARE(int{daemon.commandPort()}, base.toInt() % 65536);
        QCOMPARE(int{daemon.eventPort()}, base.toInt() % 65536 + 1);
    } else {
        QVERIFY(daemon.commandPort() > 2 && daemon.eventPort() > 2);
    }
    const auto events = daemon.openEvents();
    {
        const auto commands = daemon.openCommands();
        const daemonLog log;
        commands->send("<exit/><progress>activate</progress>");
        events->eventsUntil("isActivated");
        commands->send("<exit/>");
        QTRY_VERIFY_WITH_TIMEOUT(log.contains("---- got exit command by client!"), patienceMs);
        events->send("<exit/>");
    }
    QVERIFY(events->isServed());
    const auto commands = daemon.openCommands();
    commands->progress("create:0;x");
    QVERIFY(events->eventsUntil("isShown").endsWith("isShown"));
    QVERIFY(daemon.isRunning());
}

void startAndEndTest::ignoresTheBasePortOfLongerCommandLines()
{
    const quint16 base = freeBasePort();
    daemonProcess daemon(m_screen, {QString::number(base), QStringLiteral("more")});
    QVERIFY(daemon.commandPort() != base);
    daemon.openCommands()->send("<exit/>");
    QVERIFY(endedInOrder(daemon));
}

void startAndEndTest::reportsAPortThatIsTaken()
{
    QTcpServer occupant;
    const quint16 base = freeBasePort();
    QVERIFY(occupant.listen(QHostAddress::AnyIPv4, static_cast<quint16>(base + 1)));
    daemonProcess daemon(m_screen, {QString::number(base)});
    QCOMPARE(daemon.commandPort(), base);
    QCOMPARE(daemon.eventPort(), quint16{0});
    QVERIFY(daemon.isRunning());
}

void startAndEndTest::replacesALeftOverLockFile()
{
    const QString identifier = daemonProcess::newIdentifier();
    const QString path = daemonProcess::lockFileOf(identifier);
    QFile left(path);
    QVERIFY(left.open(QIODevice::WriteOnly));
    left.write("11111\n22222\nand more of an older text\n");
    left.close();

    childProcess daemon;
    daemon.setProcessEnvironment(m_screen.environment());
    daemon.start(daemonProcess::executable(), {identifier});
    QByteArray lock;
    QTRY_VERIFY_WITH_TIMEOUT(contentOf(path, lock) && lock.count('\n') == 2 && !lock.startsWith("11111\n"),
                             patienceMs);
    daemon.kill();
    QVERIFY(daemon.waitForFinished(patienceMs));
    QVERIFY2(QFile::exists(path), "a killed daemon leaves its lock file");
    QVERIFY(QFile::remove(path));
}

void startAndEndTest::leavesItsFilesInOrderWithoutXServer()
{
    auto screen = std::make_unique<virtualScreen>();
    daemonProcess daemon(*screen);
    const auto events = daemon.openEvents();
    screen.reset();
    QVERIFY(daemon.waitForEnd() != 0);
    QVERIFY(!QFile::exists(daemon.lockFile()));
}

QTEST_GUILESS_MAIN(startAndEndTest)
#include "startAndEndTest.moc"
