#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QFile>
#include <QStandardPaths>
#include <QTest>

/// A real session manager ends the session.
class sessionManagerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup() { m_manager.reset(); }
    void endsTheDaemon_data();
    void endsTheDaemon();

private:
    virtualScreen m_screen;
    std::unique_ptr<QTemporaryDir> m_home;
    std::unique_ptr<childProcess> m_manager;
};

void sessionManagerTest::initTestCase()
{
    if (QStandardPaths::findExecutable("xsm").isEmpty() ||
        QStandardPaths::findExecutable("iceauth").isEmpty())
        QSKIP("xsm or iceauth is not installed");
}

/// Starts the session manager; what is started on the screen then takes part in its session.
void sessionManagerTest::init()
{
    // Without saved sessions it starts at once.
    m_home = std::make_unique<QTemporaryDir>();
    m_screen.setVariable("HOME", m_home->path());
    writeFile(m_home->filePath(".xsmstartup"), "true\n");

    m_manager = std::make_unique<childProcess>();
    m_manager->setProcessEnvironment(m_screen.environment());
    m_manager->setProcessChannelMode(QProcess::MergedChannels);
    m_manager->start("stdbuf", {"-oL", "xsm", "-verbose"});
    QByteArray said;
    const QByteArray mark("setenv SESSION_MANAGER ");
    const auto tellsItsAddress = [&] {
        said += m_manager->readAll();
        return said.contains(mark) && said.endsWith('\n');
    };
    QVERIFY2(QTest::qWaitFor(tellsItsAddress, patienceMs), said);
    const QByteArray address = said.mid(said.indexOf(mark) + mark.size());
    m_screen.setVariable("SESSION_MANAGER", address.left(address.indexOf('\n')));
}

void sessionManagerTest::endsTheDaemon_data()
{
    QTest::addColumn<QStringList>("basePort");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<bool>("immediately"); // without a chance to save
    // Only its buttons answer it.
    const QByteArray box("<msgbox>1[#]unknown[#]x[#]1024[#]2048</msgbox>");
    QTest::newRow("idle") << QStringList() << QByteArray() << false;
    QTest::newRow("in a run") << QStringList{"0"} << QByteArray("<progress>create:0;x</progress>") << false;
    QTest::newRow("with a box open") << QStringList{"0"} << box << false;
    QTest::newRow("immediately with a box open") << QStringList{"0"} << box << true;
}

void sessionManagerTest::endsTheDaemon()
{
    QFETCH(QStringList, basePort);
    QFETCH(QByteArray, message);
    QFETCH(bool, immediately);
    daemonProcess daemon(m_screen, basePort);
    // The dialog must not cover the manager's windows.
    const auto events = daemon.openEvents("paintOffset=290|100");
    const auto commands = daemon.openCommands();
    commands->send(message);
    QVERIFY(message.isEmpty() || m_screen.waitForFocus("unknown").id);

    // The menu of the manager's last button, one of its two entries, and the form that the first one opens.
    m_screen.xdotool(
        "search --sync --onlyvisible --name ^xsm: mousemove --window %1 140 37 mousedown 1 sleep 0.2 "
        "mousemove_relative -- 10 8 sleep 0.2 mousemove_relative -- 0 " +
        QString(immediately ? "31" : "15") + " sleep 0.2 mouseup 1");
    if (!immediately) {
        const QString form("search --sync --onlyvisible --name ^Shutdown$ ");
        m_screen.xdotool(form + "mousemove --window %1 160 13 sleep 0.1 click 1");
        m_screen.xdotool(form + "windowfocus %1 type s");
        m_screen.xdotool(form + "mousemove --window %1 36 108 sleep 0.1 click 1");
    }

    QVERIFY(events->hears("shutDown"));
    QCOMPARE(daemon.waitForEnd(), 0);
    QVERIFY(!QFile::exists(daemon.lockFile()));
    if (message.startsWith("<msgbox>"))
        QCOMPARE(commands->answer(), qint64{0});
}

QTEST_GUILESS_MAIN(sessionManagerTest)
#include "sessionManagerTest.moc"
