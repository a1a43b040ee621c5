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
    void clickIn(const QString &title, QPoint at);

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
    QFile startup(m_home->filePath(".xsmstartup"));
    QVERIFY(startup.open(QIODevice::WriteOnly));
    startup.write("true\n");
    startup.close();

    m_manager = std::make_unique<childProcess>();
    m_manager->setProcessEnvironment(m_screen.environment());
    m_manager->setProcessChannelMode(QProcess::MergedChannels);
    m_manager->start("stdbuf", {"-oL", "xsm", "-verbose"});
    QByteArray said;
    const bool tellsItsAddress = QTest::qWaitFor(
        [&] {
            said += m_manager->readAll();
            return said.contains("setenv SESSION_MANAGER") && said.endsWith('\n');
        },
        patienceMs);
    QVERIFY2(tellsItsAddress, said);
    const qsizetype start =
        said.indexOf("setenv SESSION_MANAGER ") + qsizetype(sizeof "setenv SESSION_MANAGER ") - 1;
    m_screen.setVariable("SESSION_MANAGER",
                         QString::fromLatin1(said.mid(start, said.indexOf('\n', start) - start)));
}

void sessionManagerTest::clickIn(const QString &title, QPoint at)
{
    m_screen.run("xdotool",
                 {"search", "--sync", "--onlyvisible", "--name", title, "mousemove", "--window", "%1",
                  QString::number(at.x()), QString::number(at.y()), "sleep", "0.1", "click", "1"});
}

void sessionManagerTest::endsTheDaemon_data()
{
    QTest::addColumn<bool>("withBasePort");
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<bool>("immediately"); // without a chance to save
    const QByteArray box("<msgbox>1[#]Copy[#]x[#]16384[#]65536</msgbox>");
    QTest::newRow("idle") << false << QByteArray() << false;
    QTest::newRow("with a base port") << true << QByteArray() << false;
    QTest::newRow("in a run") << true << QByteArray("<progress>create:0;x</progress>") << false;
    QTest::newRow("with a box open") << true << box << false;
    QTest::newRow("immediately") << true << QByteArray() << true;
    QTest::newRow("immediately with a box open") << true << box << true;
}

void sessionManagerTest::endsTheDaemon()
{
    QFETCH(bool, withBasePort);
    QFETCH(QByteArray, message);
    QFETCH(bool, immediately);
    daemonProcess daemon(m_screen, withBasePort ? QStringList{"0"} : QStringList());
    // The dialog must not cover the manager's windows.
    const auto events = daemon.openEvents("paintOffset=290|100");
    const auto commands = daemon.openCommands();
    commands->send(message);
    if (!message.isEmpty())
        QVERIFY(m_screen.waitForFocus(
            m_screen.waitForWindow(message.startsWith("<msgbox>") ? "Copy" : "unknown")));

    // The menu of the manager's last button, one of its two entries, and the form that the first one opens.
    const auto move = [](int x, int y) {
        return QStringList{"mousemove_relative", "--",    QString::number(x),
                           QString::number(y),   "sleep", "0.2"};
    };
    m_screen.run("xdotool", QStringList{"search", "--sync", "--onlyvisible", "--name", "^xsm: ", "mousemove",
                                        "--window", "%1", "140", "37", "mousedown", "1", "sleep", "0.2"} +
                                move(10, 8) + move(0, immediately ? 31 : 15) + QStringList{"mouseup", "1"});
    if (!immediately) {
        clickIn("^Shutdown$", {160, 13});
        m_screen.run("xdotool",
                     {"search", "--onlyvisible", "--name", "^Shutdown$", "windowfocus", "%1", "type", "s"});
        clickIn("^Shutdown$", {36, 108});
    }

    QVERIFY(events->eventsUntil("shutDown").endsWith("shutDown"));
    QCOMPARE(daemon.waitForEnd(), 0);
    QVERIFY(!QFile::exists(daemon.lockFile()));
    if (message.startsWith("<msgbox>"))
        QCOMPARE(commands->answer(), qint64{0});
}

QTEST_GUILESS_MAIN(sessionManagerTest)
#include "sessionManagerTest.moc"
