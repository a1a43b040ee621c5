#include "tests/support/daemonLog.h"
#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QFile>
#include <QTcpServer>
#include <QTest>

/// Command line, ports, lock file, and the ways in which the daemon ends or does not.
class startAndEndTest : public QObject
{
    Q_OBJECT

private slots:
    void answersWithoutDisplay();
    void endsOnExit();
    void endsWithItsLastClient();
    void staysWithABasePort();
    void ignoresTheBasePortOfLongerCommandLines();
    void reportsAPortThatIsTaken();
    void replacesALeftOverLockFile();
    void leavesItsFilesInOrderWithoutXServer();

private:
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

bool endedInOrder(daemonProcess &daemon)
{
    return daemon.waitForEnd() == 0 && !QFile::exists(daemon.lockFile()) &&
           daemon.statistics() == "fileversion=2\n";
}

} // namespace

void startAndEndTest::endsOnExit()
{
    for (const bool onEventChannel : {false, true}) {
        daemonProcess daemon(m_screen);
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
    QVERIFY(firstEvents->hears("shutDown"));
    QVERIFY(endedInOrder(daemon));
    QVERIFY(log.contains(": ---- doing exit by last closed connection! result=0000\n"));
}

void startAndEndTest::staysWithABasePort()
{
    // Of a number the low 16 bits count; 0 and 1 stand for any ports.
    for (const int base : {int{freeBasePort()}, freeBasePort() + 65536, 0, 1}) {
        daemonProcess daemon(m_screen, {QString::number(base)});
        if (base > 1) {
            QCOMPARE(int{daemon.commandPort()}, base % 65536);
            QCOMPARE(int{daemon.eventPort()}, base % 65536 + 1);
        } else {
            QVERIFY(daemon.commandPort() > 2 && daemon.eventPort() > 2);
        }
        const auto events = daemon.openEvents();
        const daemonLog log;
        daemon.openCommands()->send("<exit/>");
        QTRY_VERIFY_WITH_TIMEOUT(log.contains("---- got exit command by client!"), patienceMs);
        events->send("<exit/>");
        QVERIFY(events->isServed());
        daemon.openCommands()->progress("create:0;x");
        QVERIFY(events->hears("isShown"));
        QVERIFY(daemon.isRunning());
    }
}

void startAndEndTest::ignoresTheBasePortOfLongerCommandLines()
{
    const quint16 base = freeBasePort();
    daemonProcess daemon(m_screen, {QString::number(base), "more"});
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
    const QString path = lockFileOf(identifier);
    writeFile(path, "11111\n22222\nand more of an older text\n");
    childProcess daemon;
    daemon.setProcessEnvironment(m_screen.environment());
    daemon.start(daemonProcess::executable(), {identifier});
    const auto isReplaced = [&path] {
        const QByteArray lock = contentOf(path);
        return lock.count('\n') == 2 && !lock.startsWith("11111\n");
    };
    QTRY_VERIFY_WITH_TIMEOUT(isReplaced(), patienceMs);
    daemon.kill();
    QVERIFY(daemon.waitForFinished(patienceMs));
    removeFilesOf(identifier);
}

void startAndEndTest::leavesItsFilesInOrderWithoutXServer()
{
    auto screen = std::make_unique<virtualScreen>();
    daemonProcess daemon(*screen);
    const auto events = daemon.openEvents();
    const daemonLog log;
    screen.reset();
    QVERIFY(daemon.waitForEnd() != 0);
    QVERIFY2(!('\n' + log.written()).contains("\n: "), "records without their time");
    QVERIFY(!QFile::exists(daemon.lockFile()));
    QCOMPARE(daemon.statistics(), QByteArray("fileversion=2\n"));
}

void startAndEndTest::answersWithoutDisplay()
{
    const QByteArray usage("usage: progressd IDENTIFIER [BASEPORT]\n");
    const QByteArray tooLong("progressd: the identifier is too long\n");
    struct {
        QStringList arguments;
        int status;
        QByteArray output; // how it begins
        QByteArray error;
    } const calls[] = {
        {{}, 2, "", usage},
        {{"--help"}, 0, usage, ""},
        {{"--version"}, 0, "progressd 1.", ""},
        // The statistics path holds 1023 characters, the lock file's 4095.
        {{QString(1000, u'x')}, 2, "", tooLong},
        {{QString(100'000, u'x')}, 2, "", tooLong},
    };
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(name);
    for (const auto &call : calls) {
        childProcess process;
        process.setProcessEnvironment(environment);
        process.start(daemonProcess::executable(), call.arguments);
        QVERIFY(process.waitForFinished(patienceMs));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), call.status);
        const QByteArray output = process.readAllStandardOutput();
        QVERIFY2(output.startsWith(call.output) && output.isEmpty() == call.output.isEmpty(), output);
        QCOMPARE(process.readAllStandardError(), call.error);
    }
}

QTEST_GUILESS_MAIN(startAndEndTest)
#include "startAndEndTest.moc"
