#include "client/progressClient.h"

#include "tests/support/daemonProcess.h"
#include "tests/support/virtualScreen.h"

#include <QFile>
#include <QScopeGuard>
#include <QTcpServer>
#include <QTest>

#include <csignal>
#include <future>
#include <poll.h>

using client = progressClient;
using button = progressClient::button;
using kind = progressClient::event::kind;
using reason = progressClient::error::reason;
using namespace std::chrono_literals;

/// The client library against the real daemon.
class progressClientTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void startsOneDaemonForManyCallers();
    void doesNotStart_data();
    void doesNotStart();
    void leavesNoFilesOpenInTheDaemon();
    void stops_data();
    void stops();
    void findsADaemonWithoutDisturbingIt();
    void takesNoStaleLockFile();

    void asksBehindProgress();
    void hearsNobodyAnswer();
    void refusesBadArguments();
    void saysWhenTheDaemonIsFull();
    void saysWhenTheDaemonGoes();
    void doesNotWaitForAStoppedDaemon();
    void deliversEventsWhenPolled();
    void renewsADeafChannel();

private:
    client::startedDaemon start(int basePort = 0, const QString &program = daemonProcess::executable());
    client connect(client::channels wanted) { return client(m_identifier, wanted, patience); }
    bool lockFileExists() const { return QFile::exists(lockFileOf(QString::fromStdString(m_identifier))); }

    static constexpr auto patience = std::chrono::milliseconds(patienceMs);
    virtualScreen m_screen;
    const std::string m_identifier = daemonProcess::newIdentifier().toStdString();
};

namespace
{

template <typename Call> std::optional<reason> failureOf(const Call &call)
{
    try {
        call();
        return std::nullopt;
    } catch (const client::error &problem) {
        if (std::string(problem.what()).find('\n') != std::string::npos)
            QTest::qFail("an error's text is more than a line", __FILE__, __LINE__);
        return problem.why();
    }
}

/// Waits until the events have come up to the first of this kind; all of them, with a blank between them.
QString eventsUntil(client &connection, kind last)
{
    QStringList heard;
    while (const auto event = connection.nextEvent(std::chrono::milliseconds(patienceMs))) {
        heard.append(QString::fromStdString(event->text));
        if (event->what == last)
            break;
    }
    return heard.join(' ');
}

} // namespace

void progressClientTest::initTestCase()
{
    // The daemons that the library starts inherit this.
    const QProcessEnvironment environment = m_screen.environment();
    for (const char *name : {"DISPLAY", "XDG_RUNTIME_DIR"})
        qputenv(name, environment.value(name).toLocal8Bit());
}

void progressClientTest::cleanup()
{
    const auto failure = failureOf([this] { client::stopDaemon(m_identifier, patience); });
    QVERIFY(!failure || failure == reason::notRunning);
    removeFilesOf(QString::fromStdString(m_identifier));
}

client::startedDaemon progressClientTest::start(int basePort, const QString &program)
{
    client::daemonOptions options;
    options.program = program.toStdString();
    options.basePort = basePort;
    options.timeout = patience;
    return client::startDaemon(m_identifier, options);
}

void progressClientTest::startsOneDaemonForManyCallers()
{
    std::vector<std::future<client::startedDaemon>> callers;
    callers.reserve(8);
    for (int i = 0; i < 8; ++i)
        callers.push_back(std::async(std::launch::async, [this] { return start(); }));
    int started = 0;
    QSet<int> ports;
    for (auto &each : callers) {
        const auto daemon = each.get();
        started += daemon.wasRunning ? 0 : 1;
        ports << daemon.daemonPorts.command << daemon.daemonPorts.event;
    }
    QCOMPARE(started, 1);
    QCOMPARE(ports.size(), 2);
}

void progressClientTest::doesNotStart_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<int>("basePort");
    QTest::addColumn<reason>("why");
    QTest::newRow("no such program") << "/nonexistent/progressd" << 0 << reason::cannotStart;
    QTest::newRow("ends at once") << "true" << 0 << reason::cannotStart;
    QTest::newRow("port 1") << "true" << 1 << reason::badArgument;
    QTest::newRow("port too high") << "true" << 65535 << reason::badArgument;
    QTest::newRow("port taken") << daemonProcess::executable() << -1 << reason::cannotStart;
}

/// A base port of -1 stands for one that somebody else has.
void progressClientTest::doesNotStart()
{
    QFETCH(QString, program);
    QFETCH(int, basePort);
    QTcpServer other;
    if (basePort == -1) {
        QVERIFY(other.listen(QHostAddress::AnyIPv4));
        basePort = other.serverPort();
    }
    QTEST(*failureOf([&] { start(basePort, program); }), "why");
    QVERIFY(!lockFileExists());
}

/// Somebody who waits for the end of a pipe must not wait for the daemon.
void progressClientTest::leavesNoFilesOpenInTheDaemon()
{
    int ends[2];
    QCOMPARE(::pipe(ends), 0);
    const auto closer = qScopeGuard([&ends] { ::close(ends[0]); });
    start();
    ::close(ends[1]);
    pollfd end{ends[0], POLLIN, 0};
    QCOMPARE(::poll(&end, 1, patienceMs), 1);
}

void progressClientTest::stops_data()
{
    QTest::addColumn<int>("basePort");
    QTest::addColumn<bool>("isStopped");
    QTest::newRow("no base port") << client::noBasePort << false;
    QTest::newRow("base port, while it is stopped") << 0 << true;
}

void progressClientTest::stops()
{
    QFETCH(int, basePort);
    QFETCH(bool, isStopped);
    const auto daemon = start(basePort);
    if (isStopped)
        ::kill(daemon.process, SIGSTOP);
    client::stopDaemon(m_identifier, patience);
    QVERIFY(!lockFileExists());
    QVERIFY(!client::findDaemon(m_identifier));
    QCOMPARE(*failureOf([this] { client::stopDaemon(m_identifier); }), reason::notRunning);
}

/// A connection that came and went would end it.
void progressClientTest::findsADaemonWithoutDisturbingIt()
{
    const auto daemon = start(client::noBasePort);
    for (int i = 0; i < 20; ++i)
        QCOMPARE(client::findDaemon(m_identifier)->command, daemon.daemonPorts.command);
    client connection(daemon.daemonPorts, client::channels::both, patience);
    connection.activate();
    QCOMPARE(eventsUntil(connection, kind::isActivated), "isActivated");
}

void progressClientTest::takesNoStaleLockFile()
{
    for (const char *content : {"0\n0\n", "5000\n", "a\nb\n", "70000\n70001\n", "1\n2\n"}) {
        writeFile(lockFileOf(QString::fromStdString(m_identifier)), content);
        QVERIFY(!client::findDaemon(m_identifier));
        QCOMPARE(*failureOf([this] { connect(client::channels::both); }), reason::notRunning);
    }
    QVERIFY(!start().wasRunning);
    client connection = connect(client::channels::both);
    connection.activate();
    QVERIFY(connection.nextEvent(patience));
}

/// The daemon would drop progress commands that a box is sent right behind.
void progressClientTest::asksBehindProgress()
{
    const auto daemon = start();
    client connection = connect(client::channels::both);
    client::question box;
    box.title = m_identifier;
    box.buttons = {button::yes, button::noToAll};
    box.preset = button::noToAll;
    // What is sent to a stopped daemon arrives together.
    ::kill(daemon.process, SIGSTOP);
    connection.createBar(0, "");
    auto answer = std::async(std::launch::async, [&] { return connection.ask(box, patience); });
    QTest::qWait(100);
    ::kill(daemon.process, SIGCONT);
    QVERIFY(m_screen.waitForFocus(QString::fromStdString(m_identifier)).id);
    m_screen.key("Return");
    QCOMPARE(answer.get(), button::noToAll);
    QVERIFY(eventsUntil(connection, kind::isShown).endsWith("isShown"));
}

/// The answer that nobody waited for must not pass for the next one.
void progressClientTest::hearsNobodyAnswer()
{
    start();
    client connection = connect(client::channels::commands);
    client::question box;
    box.title = m_identifier;
    const QString title = QString::fromStdString(m_identifier);
    QCOMPARE(*failureOf([&] { connection.ask(box, 10ms); }), reason::timedOut);
    QVERIFY(m_screen.waitForFocus(title).id);
    m_screen.key("Return");
    QTRY_VERIFY_WITH_TIMEOUT(!m_screen.shows(title), patienceMs);
    QCOMPARE(*failureOf([&] { connection.reportAssertion("again", 10ms); }), reason::timedOut);
}

void progressClientTest::refusesBadArguments()
{
    start();
    client connection = connect(client::channels::commands);
    const std::function<void()> calls[] = {
        [&] { connection.createBar(-1, ""); },
        [&] { connection.removeText(10); },
        [&] { connection.updateBar(0, 101); },
        [&] { connection.updateBar(0, -2); },
        [&] { connection.updateText(0, "a;b"); },
        [&] {
            connection.configure({{"windowTitle", "a;b"}});
        },
        [&] { connection.reportAssertion("</assert>"); },
        [&] { connection.nextEvent(0ms); },
    };
    for (const auto &call : calls)
        QCOMPARE(*failureOf(call), reason::badArgument);
    connection.activate();
    connection.finish();
}

void progressClientTest::saysWhenTheDaemonIsFull()
{
    start();
    std::vector<client> served;
    served.reserve(10);
    for (int i = 0; i < 10; ++i)
        served.push_back(connect(client::channels::commands));
    const auto use = [](client &each) {
        each.activate();
        each.finish();
    };
    client late = connect(client::channels::commands);
    QCOMPARE(*failureOf([&] { use(late); }), reason::gone);
    for (client &each : served)
        use(each);
}

void progressClientTest::saysWhenTheDaemonGoes()
{
    const auto daemon = start();
    client connection = connect(client::channels::both);
    connection.createBar(0, "");
    ::kill(daemon.process, SIGKILL);
    QCOMPARE(*failureOf([&] { eventsUntil(connection, kind::shutDown); }), reason::gone);
    // Its channels close one after the other.
    QTRY_VERIFY_WITH_TIMEOUT(failureOf([&] { connection.updateBar(0, 5); }) == reason::gone, patienceMs);
    QCOMPARE(*failureOf([this] { connect(client::channels::both); }), reason::notRunning);
}

void progressClientTest::doesNotWaitForAStoppedDaemon()
{
    const auto daemon = start();
    ::kill(daemon.process, SIGSTOP);
    const auto goOn = qScopeGuard([&] { ::kill(daemon.process, SIGCONT); });
    client connection(m_identifier, client::channels::commands, 50ms);
    connection.createBar(0, "");
    QCOMPARE(*failureOf([&] { connection.finish(); }), reason::timedOut);
    client sender(m_identifier, client::channels::commands, 50ms);
    const std::string endless(64 * 1024 * 1024, ' ');
    QCOMPARE(*failureOf([&] { sender.send(endless); }), reason::timedOut);
}

void progressClientTest::deliversEventsWhenPolled()
{
    start();
    client connection = connect(client::channels::both);
    QCOMPARE(connection.handleEvents([](const auto &) {}), size_t{0});
    constexpr size_t count = 500;
    for (size_t i = 0; i < count; ++i)
        connection.activate();
    pollfd events{connection.eventFd(), POLLIN, 0};
    size_t heard = 0;
    while (heard < count && ::poll(&events, 1, patienceMs) == 1)
        heard += connection.handleEvents([](const auto &) {});
    QCOMPARE(heard, count);
}

/// The daemon serves event channels up to the first one that has gone.
void progressClientTest::renewsADeafChannel()
{
    start();
    std::optional<client> first(connect(client::channels::events));
    client second = connect(client::channels::both);
    second.activate();
    QVERIFY(second.nextEvent(patience));
    first.reset();
    QTRY_VERIFY_WITH_TIMEOUT((second.activate(), !second.nextEvent(200ms)), patienceMs);
    second.renewEventChannel();
    second.activate();
    QVERIFY(second.nextEvent(patience));
}

QTEST_GUILESS_MAIN(progressClientTest)
#include "progressClientTest.moc"
