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

    void startsOneDaemon();
    void startsOneDaemonForManyCallers();
    void doesNotStart_data();
    void doesNotStart();
    void leavesNoFilesOpenInTheDaemon();
    void stops_data();
    void stops();
    void findsADaemonWithoutDisturbingIt();
    void takesNoStaleLockFile_data();
    void takesNoStaleLockFile();

    void carriesEveryCommand();
    void asks_data();
    void asks();
    void hearsNobodyAnswer();
    void refusesBadArguments_data();
    void refusesBadArguments();
    void saysWhenTheDaemonIsFull();
    void saysWhenTheDaemonGoes();
    void doesNotWaitForAStoppedDaemon();
    void deliversEventsWhenPolled();
    void renewsADeafChannel();

private:
    client::startedDaemon start(int basePort = 0);

    virtualScreen m_screen;
    std::string m_identifier;
};

namespace
{

constexpr auto patience = std::chrono::milliseconds(patienceMs);

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

/// The events up to the first of this kind, as they came.
QStringList eventsUntil(client &connection, kind last)
{
    QStringList heard;
    while (const auto event = connection.nextEvent(patience)) {
        heard.append(QString::fromStdString(event->text));
        if (event->what == last)
            return heard;
    }
    return heard;
}

void writeLockFile(const std::string &identifier, const QByteArray &content)
{
    QFile file(QString::fromStdString(client::lockFilePath(identifier)));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        QTest::qFail("the lock file cannot be written", __FILE__, __LINE__);
}

bool lockFileExists(const std::string &identifier)
{
    return QFile::exists(QString::fromStdString(client::lockFilePath(identifier)));
}

} // namespace

void progressClientTest::initTestCase()
{
    // The daemons that the library starts inherit this.
    const QProcessEnvironment environment = m_screen.environment();
    for (const char *name : {"DISPLAY", "XDG_RUNTIME_DIR"})
        qputenv(name, environment.value(QLatin1String(name)).toLocal8Bit());
    m_identifier = daemonProcess::newIdentifier().toStdString();
}

void progressClientTest::cleanup()
{
    const auto failure = failureOf([this] { client::stopDaemon(m_identifier, patience); });
    QVERIFY(!failure || failure == reason::notRunning);
    QFile::remove(QString::fromStdString(client::lockFilePath(m_identifier)));
    for (const char *folder : {"/var/instrument", "/var/tmp"})
        QFile::remove(QStringLiteral("%1/currentTimestamps_%2.txt")
                          .arg(QLatin1String(folder), QString::fromStdString(m_identifier)));
}

client::startedDaemon progressClientTest::start(int basePort)
{
    client::daemonOptions options;
    options.program = daemonProcess::executable().toStdString();
    options.basePort = basePort;
    options.timeout = patience;
    return client::startDaemon(m_identifier, options);
}

void progressClientTest::startsOneDaemon()
{
    const auto first = start();
    QVERIFY(!first.wasRunning);
    QVERIFY(first.process > 0);
    QVERIFY(first.daemonPorts.command > 0 && first.daemonPorts.event > 0);
    const auto second = start();
    QVERIFY(second.wasRunning);
    QCOMPARE(second.daemonPorts.command, first.daemonPorts.command);
    QCOMPARE(second.daemonPorts.event, first.daemonPorts.event);
}

void progressClientTest::startsOneDaemonForManyCallers()
{
    std::vector<std::future<client::startedDaemon>> callers;
    for (int i = 0; i < 8; ++i)
        callers.push_back(std::async(std::launch::async, [this] { return start(); }));
    int started = 0;
    QSet<int> ports;
    for (auto &each : callers) {
        const auto daemon = each.get();
        started += daemon.wasRunning ? 0 : 1;
        ports.insert(daemon.daemonPorts.command);
    }
    QCOMPARE(started, 1);
    QCOMPARE(ports.size(), 1);
}

void progressClientTest::doesNotStart_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<int>("basePort");
    QTest::addColumn<reason>("why");
    QTest::newRow("no such program") << QStringLiteral("/nonexistent/progressd") << 0 << reason::cannotStart;
    QTest::newRow("ends at once") << QStringLiteral("true") << 0 << reason::cannotStart;
    QTest::newRow("port 1") << QStringLiteral("true") << 1 << reason::badArgument;
    QTest::newRow("port too high") << QStringLiteral("true") << 65535 << reason::badArgument;
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
    client::daemonOptions options;
    options.program = program.toStdString();
    options.basePort = basePort;
    options.timeout = patience;
    QTEST(*failureOf([&] { client::startDaemon(m_identifier, options); }), "why");
    QVERIFY(!lockFileExists(m_identifier));
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
    QTest::newRow("base port") << 0 << false;
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
    QVERIFY(!lockFileExists(m_identifier));
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
    QCOMPARE(eventsUntil(connection, kind::isActivated), QStringList{QStringLiteral("isActivated")});
}

void progressClientTest::takesNoStaleLockFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("ports that refuse") << QByteArray("1\n2\n");
    QTest::newRow("ports of zero") << QByteArray("0\n0\n");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("half") << QByteArray("5000\n");
    QTest::newRow("no numbers") << QByteArray("a\nb\n");
    QTest::newRow("no ports") << QByteArray("70000\n70001\n");
}

void progressClientTest::takesNoStaleLockFile()
{
    QFETCH(QByteArray, content);
    writeLockFile(m_identifier, content);
    QVERIFY(!client::findDaemon(m_identifier));
    QCOMPARE(*failureOf([this] { client connection(m_identifier); }), reason::notRunning);
    QVERIFY(!start().wasRunning);
    client connection(m_identifier, client::channels::both, patience);
    connection.activate();
    QVERIFY(connection.nextEvent(patience));
}

void progressClientTest::carriesEveryCommand()
{
    start();
    client connection(m_identifier, client::channels::both, patience);
    const std::string title = m_identifier + " title";
    connection.configure(
        {{"windowTitle", title}, {"windowModal", "off"}, {"busyIndicator", "5|5|40|20|none.png"}});
    connection.createBar(0, "K\xC3\xA4se <5 > 4>");
    connection.updateBar(0, 40);
    connection.createBar(1, "");
    connection.updateBar(1, client::givenUp);
    connection.createText(2, "text");
    connection.updateText(2, "new text");
    connection.addButton(9, "Stop");
    connection.activate();
    const QStringList heard = eventsUntil(connection, kind::isActivated);
    QCOMPARE(heard.first(), QStringLiteral("isShown"));
    QVERIFY2(heard.contains(QStringLiteral("totalProgress=70|-1")), qPrintable(heard.join(QLatin1Char(' '))));
    QVERIFY(m_screen.shows(QString::fromStdString(title)));

    connection.messageStart();
    QTRY_VERIFY_WITH_TIMEOUT(!m_screen.shows(QString::fromStdString(title)), patienceMs);
    connection.messageStop();
    QTRY_VERIFY_WITH_TIMEOUT(m_screen.shows(QString::fromStdString(title)), patienceMs);
    connection.busyOn();
    connection.busyOff();
    connection.removeButton(9);
    connection.removeText(2);
    connection.removeBar(1);
    connection.removeBar(0);
    connection.finish();
    QVERIFY(eventsUntil(connection, kind::isHidden).contains(QStringLiteral("isHidden")));
}

void progressClientTest::asks_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<button>("pressed");
    QTest::newRow("preset") << QStringLiteral("Return") << button::noToAll;
    QTest::newRow("another") << QStringLiteral("alt+y") << button::yes;
}

void progressClientTest::asks()
{
    QFETCH(QString, key);
    start();
    client connection(m_identifier, client::channels::commands, patience);
    client::question box;
    box.title = m_identifier + " box";
    box.text = "Go on?";
    box.buttons = {button::yes, button::noToAll};
    box.preset = button::noToAll;
    auto answer = std::async(std::launch::async, [&] { return connection.ask(box, patience); });
    const auto window = m_screen.waitForWindow(QString::fromStdString(box.title));
    QVERIFY(window.id != 0);
    m_screen.run(QStringLiteral("xdotool"), {QStringLiteral("windowfocus"), QStringLiteral("--sync"),
                                             QString::number(window.id), QStringLiteral("key"), key});
    QTEST(answer.get(), "pressed");
}

/// The answer that nobody waited for must not pass for the next one.
void progressClientTest::hearsNobodyAnswer()
{
    start();
    client connection(m_identifier, client::channels::commands, patience);
    client::question box;
    box.title = m_identifier + " late";
    QCOMPARE(*failureOf([&] { connection.ask(box, 10ms); }), reason::timedOut);
    const auto late = m_screen.waitForWindow(QString::fromStdString(box.title));
    m_screen.run(QStringLiteral("xdotool"),
                 {QStringLiteral("windowfocus"), QStringLiteral("--sync"), QString::number(late.id),
                  QStringLiteral("key"), QStringLiteral("Return")});
    QTRY_VERIFY_WITH_TIMEOUT(!m_screen.shows(QString::fromStdString(box.title)), patienceMs);
    QCOMPARE(*failureOf([&] { connection.reportAssertion("again", 10ms); }), reason::timedOut);
}

void progressClientTest::refusesBadArguments_data()
{
    using call = std::function<void(client &)>;
    QTest::addColumn<call>("act");
    QTest::newRow("slot below") << call([](client &c) { c.createBar(-1, ""); });
    QTest::newRow("slot above") << call([](client &c) { c.removeText(10); });
    QTest::newRow("percent above") << call([](client &c) { c.updateBar(0, 101); });
    QTest::newRow("percent below") << call([](client &c) { c.updateBar(0, -2); });
    QTest::newRow("separator") << call([](client &c) { c.updateText(0, "a;b"); });
    QTest::newRow("separator in a setting") << call([](client &c) { c.configure({{"windowTitle", "a;b"}}); });
    QTest::newRow("tag") << call([](client &c) { c.reportAssertion("</assert>"); });
    QTest::newRow("no events wanted") << call([](client &c) { c.nextEvent(0ms); });
}

void progressClientTest::refusesBadArguments()
{
    QFETCH(std::function<void(client &)>, act);
    const auto daemon = start();
    client connection(daemon.daemonPorts, client::channels::commands, patience);
    QCOMPARE(*failureOf([&] { act(connection); }), reason::badArgument);
    connection.activate();
    connection.finish();
}

void progressClientTest::saysWhenTheDaemonIsFull()
{
    start();
    std::vector<client> served;
    for (int i = 0; i < 10; ++i)
        served.emplace_back(m_identifier, client::channels::commands, patience);
    QCOMPARE(*failureOf([this] {
        client late(m_identifier, client::channels::commands, patience);
        late.activate();
        late.finish();
    }),
             reason::gone);
    for (client &each : served) {
        each.activate();
        each.finish();
    }
}

void progressClientTest::saysWhenTheDaemonGoes()
{
    const auto daemon = start();
    client connection(m_identifier, client::channels::both, patience);
    connection.createBar(0, "");
    ::kill(daemon.process, SIGKILL);
    QCOMPARE(*failureOf([&] {
        for (;;)
            connection.nextEvent(patience);
    }),
             reason::gone);
    // Its channels close one after the other.
    QTRY_VERIFY_WITH_TIMEOUT(failureOf([&] { connection.updateBar(0, 5); }) == reason::gone, patienceMs);
    QCOMPARE(*failureOf([this] { client again(m_identifier); }), reason::notRunning);
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
    client connection(m_identifier, client::channels::both, patience);
    QCOMPARE(connection.handleEvents([](const auto &) {}), size_t{0});
    constexpr int count = 500;
    for (int i = 0; i < count; ++i)
        connection.activate();
    int heard = 0;
    while (heard < count) {
        pollfd events{connection.eventFd(), POLLIN, 0};
        QCOMPARE(::poll(&events, 1, patienceMs), 1);
        connection.handleEvents(
            [&heard](const client::event &each) { heard += each.what == kind::isActivated; });
    }
    QCOMPARE(heard, count);
    QVERIFY(!connection.nextEvent(0ms));
}

/// The daemon serves event channels up to the first one that has gone.
void progressClientTest::renewsADeafChannel()
{
    start();
    std::optional<client> first(std::in_place, m_identifier, client::channels::events, patience);
    client second(m_identifier, client::channels::both, patience);
    second.activate();
    QVERIFY(second.nextEvent(patience));
    first.reset();
    client checker(m_identifier, client::channels::commands, patience);
    QTRY_VERIFY_WITH_TIMEOUT((checker.activate(), !second.nextEvent(200ms)), patienceMs);
    second.renewEventChannel();
    second.activate();
    QVERIFY(second.nextEvent(patience));
}

QTEST_GUILESS_MAIN(progressClientTest)
#include "progressClient.moc"
