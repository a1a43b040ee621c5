#include "tests/client/commandLineClient.h"
#include "tests/support/clientChannel.h"
#include "tests/support/daemonProcess.h"

#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

/// The verbs of progressctl against the real daemon, apart from `pipe`.
class progressctlTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void refuses_data();
    void refuses();
    void startsAndStops();
    void startsOnThePortThatIsAsked();
    void endsADaemonThatWouldEndByItself();
    void says_data();
    void says();
    void showsAWindow();
    void asks_data();
    void asks();
    void printsEventsAsTheyCome();
    void endsEventsWithItsReader();
    void meetsStrangeDaemons_data();
    void meetsStrangeDaemons();
    void keepsItsTimeLimit();
    void printsRecords();
    void drawsRecords();

private:
    virtualScreen m_screen{virtualScreen::withOpenbox};
};

namespace
{

/// A list of words; none may hold a blank.
QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

int linesOf(const QByteArray &text)
{
    return static_cast<int>(text.count('\n'));
}

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        QTest::qFail("a file cannot be written", __FILE__, __LINE__);
}

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

void progressctlTest::initTestCase()
{
    QVERIFY(QFile::exists(QStringLiteral(PROGRESSCTL)));
}

void progressctlTest::refuses_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("message"); // a part of the one line
    QTest::newRow("no verb") << QStringList() << 2 << QByteArray("a verb is missing");
    QTest::newRow("unknown verb") << words("nix") << 2 << QByteArray("nix");
    QTest::newRow("unknown option") << words("bar 0 x --nix") << 2 << QByteArray("--nix");
    QTest::newRow("missing argument") << words("bar 0") << 2 << QByteArray("TEXT");
    QTest::newRow("too many arguments") << words("remove 0 1") << 2 << QByteArray("1");
    QTest::newRow("no number") << words("update 0 x") << 2 << QByteArray("PERCENT");
    QTest::newRow("half a number") << words("update 0 5x") << 2 << QByteArray("PERCENT");
    QTest::newRow("port too high") << words("start 70000") << 2 << QByteArray("PORT");
    QTest::newRow("no limit") << words("--limit 0 activate") << 2 << QByteArray("--limit");
    QTest::newRow("unknown state") << words("busy maybe") << 2 << QByteArray("maybe");
    QTest::newRow("unknown icon") << words("ask x --icon nix") << 2 << QByteArray("nix");
    QTest::newRow("unknown button") << words("ask x nix") << 2
                                    << QByteArray("no button \"nix\"; there are ok,");
    QTest::newRow("unknown setting") << words("configure Window=1") << 2
                                     << QByteArray("no setting \"Window\"");
    QTest::newRow("no setting") << words("configure") << 2 << QByteArray("nothing to configure");
    QTest::newRow("no file") << words("configure --file /nix") << 7 << QByteArray("/nix");
    QTest::newRow("no theme") << words("start --theme /nix") << 7 << QByteArray("/nix");
    QTest::newRow("identifier with a folder") << words("-i a/b start") << 2 << QByteArray("identifier");
    QTest::newRow("no daemon") << words("update 0 5") << 3 << QByteArray("no daemon");
    QTest::newRow("no daemon to stop") << words("stop") << 3 << QByteArray("no daemon");
    QTest::newRow("no daemon to hear") << words("events") << 3 << QByteArray("no daemon");
    QTest::newRow("nothing learned") << words("records") << 7 << QByteArray("currentTimestamps_");
}

void progressctlTest::refuses()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, message);
    const commandLineClient ctl(m_screen);
    const auto result = ctl.run(arguments);
    QTEST(result.status, "status");
    QCOMPARE(result.output, QByteArray());
    QCOMPARE(linesOf(result.errors), 1);
    QVERIFY2(result.errors.startsWith("progressctl: ") && result.errors.contains(message),
             result.errors.constData());
}

void progressctlTest::startsAndStops()
{
    const commandLineClient ctl(m_screen);
    const auto first = ctl.run(words("start"));
    QCOMPARE(first.status, 0);
    QCOMPARE(first.errors, QByteArray());
    QCOMPARE(first.output.split(' ').size(), 2);
    QCOMPARE(first.output.simplified(), read(daemonProcess::lockFileOf(ctl.identifier())).simplified());

    const auto second = ctl.run(words("start"));
    QCOMPARE(second.status, 0);
    QCOMPARE(second.output, first.output);
    QVERIFY(second.errors.contains("already runs"));

    QCOMPARE(ctl.run(words("update 0 5")).status, 0);
    QCOMPARE(ctl.run(words("stop")).status, 0);
    QVERIFY(!QFile::exists(daemonProcess::lockFileOf(ctl.identifier())));
    QCOMPARE(ctl.run(words("update 0 5")).status, 3);
}

void progressctlTest::startsOnThePortThatIsAsked()
{
    QTcpServer taken;
    QVERIFY(taken.listen(QHostAddress::AnyIPv4));
    const commandLineClient ctl(m_screen);
    const auto refused = ctl.run({QStringLiteral("start"), QString::number(taken.serverPort())});
    QCOMPARE(refused.status, 3);
    QVERIFY2(refused.errors.contains("is taken"), refused.errors.constData());

    QCOMPARE(ctl.run(words("start")).status, 0);
    const auto elsewhere = ctl.run({QStringLiteral("start"), QString::number(taken.serverPort())});
    QCOMPARE(elsewhere.status, 3);
    QVERIFY(elsewhere.errors.contains("already runs"));
}

/// Nobody but the daemon itself can end one without a base port in order.
void progressctlTest::endsADaemonThatWouldEndByItself()
{
    const commandLineClient ctl(m_screen);
    childProcess daemon;
    ctl.prepare(daemon, {});
    daemon.setProgram(daemonProcess::executable());
    daemon.setArguments({ctl.identifier()});
    daemon.start();
    QTRY_VERIFY_WITH_TIMEOUT(read(daemonProcess::lockFileOf(ctl.identifier())).count('\n') == 2, patienceMs);
    QCOMPARE(ctl.run(words("stop")).status, 0);
    QVERIFY(daemon.waitForFinished(patienceMs));
    QCOMPARE(daemon.exitStatus(), QProcess::NormalExit);
}

void progressctlTest::says_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    const auto row = [](const char *arguments, const char *message) {
        QTest::newRow(arguments) << words(arguments) << QByteArray(message);
    };
    row("bar 3 Copying", "<progress>create:3;Copying</progress>");
    row("bar 3 -- -x", "<progress>create:3;-x</progress>");
    row("update 3 50", "<progress>update:3;50</progress>");
    row("update 3 -1", "<progress>update:3;-1</progress>");
    row("remove 3", "<progress>remove:3</progress>");
    row("text 1 update", "<progress>addText:1;update</progress>");
    row("update-text 1 x", "<progress>updateText:1;x</progress>");
    row("remove-text 1", "<progress>delText:1</progress>");
    row("button 9 Stop", "<progress>addButt:9;Stop</progress>");
    row("remove-button 9", "<progress>delButt:9</progress>");
    row("activate", "<progress>activate</progress>");
    row("pause", "<progress>messageStart</progress>");
    row("resume", "<progress>messageStop</progress>");
    row("busy on", "<progress>busyOn</progress>");
    row("busy off", "<progress>busyOff</progress>");
    row("configure windowTitle=a=b windowModal=on",
        "<configuration>windowTitle=a=b;windowModal=on;</configuration>");
    row("send <x>;y", "<x>;y");
    // With whoever answers nothing, the message is all that comes of it.
    row("--limit 5 ask --timeout 0.2 --title Copy --icon Warning --default NO-To_all Sure? YES notoall",
        "<msgbox>2[#]Copy[#]Sure?[#]16384[#]131328</msgbox>");
    row("ask --timeout 0.2 Sure?", "<msgbox>4[#]Question[#]Sure?[#]16384[#]65536</msgbox>");
    row("assert --timeout 0.2 a;b", "<assert>a;b</assert>");
}

/// The bytes that reach a daemon, here one that is none.
void progressctlTest::says()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, message);
    const commandLineClient ctl(m_screen);
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::AnyIPv4));
    const QByteArray port = QByteArray::number(server.serverPort()) + '\n';
    write(daemonProcess::lockFileOf(ctl.identifier()), port + port);
    childProcess process;
    ctl.prepare(process, arguments);
    process.start();
    QVERIFY(server.waitForNewConnection(patienceMs));
    QTcpSocket *channel = server.nextPendingConnection();
    QByteArray received;
    while (received.size() < message.size() && channel->waitForReadyRead(patienceMs))
        received += channel->readAll();
    channel->disconnectFromHost();
    QVERIFY(process.waitForFinished(patienceMs));
    QCOMPARE(received, message);
}

void progressctlTest::showsAWindow()
{
    const commandLineClient ctl(m_screen);
    const QString title = ctl.identifier() + QLatin1String("-window");
    QCOMPARE(ctl.run(words("start --theme dark")).status, 0);
    QCOMPARE(ctl.run({QStringLiteral("configure"), QLatin1String("windowTitle=") + title}).status, 0);
    QCOMPARE(ctl.run({QStringLiteral("bar"), QStringLiteral("0"), QString::fromUtf8("Käse ✓")}).status, 0);
    const auto window = m_screen.waitForWindow(title);
    QVERIFY(window.id != 0);
    // The screen's size was found out when the daemon was started.
    const QPoint distance = window.area.center() - QPoint(400, 300);
    QVERIFY2(distance.manhattanLength() <= 4,
             qPrintable(QStringLiteral("%1 %2").arg(distance.x()).arg(distance.y())));
    QCOMPARE(ctl.run(words("remove 0")).status, 0);
    QTRY_VERIFY_WITH_TIMEOUT(!m_screen.shows(title), patienceMs);
}

void progressctlTest::asks_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QByteArray>("printed");
    QTest::addColumn<int>("status");
    QTest::newRow("accepted") << words("ask Sure? yes no --default yes") << QStringLiteral("Return")
                              << QByteArray("yes\n") << 0;
    QTest::newRow("rejected") << words("ask Sure? save discard cancel") << QStringLiteral("Escape")
                              << QByteArray("cancel\n") << 1;
    QTest::newRow("assertion") << words("assert nix") << QStringLiteral("Escape") << QByteArray("abort\n")
                               << 1;
}

void progressctlTest::asks()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, key);
    const commandLineClient ctl(m_screen);
    QCOMPARE(ctl.run(words("start")).status, 0);
    const bool isAssertion = arguments.first() == QLatin1String("assert");
    const QString title = isAssertion ? QStringLiteral("Zerbak Quillet Assertion") : ctl.identifier();
    if (!isAssertion)
        arguments << QStringLiteral("--title") << title;
    childProcess process;
    ctl.prepare(process, arguments);
    process.start();
    const auto window = m_screen.waitForWindow(title);
    QVERIFY(window.id != 0);
    m_screen.run(QStringLiteral("xdotool"), {QStringLiteral("windowactivate"), QStringLiteral("--sync"),
                                             QString::number(window.id), QStringLiteral("key"), key});
    QVERIFY(process.waitForFinished(patienceMs));
    QTEST(process.readAllStandardOutput(), "printed");
    QTEST(process.exitCode(), "status");
}

void progressctlTest::printsEventsAsTheyCome()
{
    const commandLineClient ctl(m_screen);
    QCOMPARE(ctl.run(words("start")).status, 0);
    childProcess events;
    ctl.prepare(events, words("events"));
    events.start();
    const auto hears = [&](const char *verb, const QByteArray &event) {
        QByteArray heard;
        // The first tries may come before it listens.
        for (int tries = 0; tries < 300 && !heard.contains(event + '\n'); ++tries) {
            ctl.run(words(verb));
            events.waitForReadyRead(100);
            heard += events.readAllStandardOutput();
        }
        return heard.contains(event + '\n');
    };
    QVERIFY(hears("activate", "isActivated"));
    QVERIFY(hears("bar 0 x", "isShown"));
    QVERIFY(hears("update 0 50", "totalProgress=50|-1"));
    QCOMPARE(ctl.run(words("stop")).status, 0);
    QVERIFY(events.waitForFinished(patienceMs));
    QCOMPARE(events.readAllStandardError(), QByteArray());
    QCOMPARE(events.exitCode(), 0);
}

void progressctlTest::endsEventsWithItsReader()
{
    const commandLineClient ctl(m_screen);
    QCOMPARE(ctl.run(words("start")).status, 0);
    childProcess script;
    ctl.prepareScript(script, QStringLiteral("progressctl events | :; echo ${PIPESTATUS[0]}"));
    script.start();
    QVERIFY(script.waitForFinished(patienceMs));
    QCOMPARE(script.readAllStandardOutput(), QByteArray("0\n"));
}

void progressctlTest::meetsStrangeDaemons_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("status");
    QTest::newRow("hangs up on a command") << words("update 0 5") << QByteArray() << 4;
    QTest::newRow("hangs up on a question") << words("ask x") << QByteArray() << 4;
    QTest::newRow("half an answer") << words("ask x") << QByteArray("\0\x40", 2) << 4;
    QTest::newRow("unknown button") << words("ask x") << QByteArray("\1\1\1\1") << 1;
    QTest::newRow("sends no events") << words("events") << QByteArray(100'000, 'x') << 4;
    QTest::newRow("is none of ours to stop") << words("stop") << QByteArray() << 3;
}

/// A server that sends `answer` and hangs up without reading.
void progressctlTest::meetsStrangeDaemons()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, answer);
    const commandLineClient ctl(m_screen);
    QTcpServer server;
    connect(&server, &QTcpServer::newConnection, &server, [&] {
        QTcpSocket *channel = server.nextPendingConnection();
        channel->write(answer);
        channel->disconnectFromHost();
    });
    QVERIFY(server.listen(QHostAddress::AnyIPv4));
    QTcpServer someoneElse;
    QVERIFY(someoneElse.listen(QHostAddress::AnyIPv4));
    const QByteArray port = QByteArray::number(server.serverPort()) + '\n';
    write(daemonProcess::lockFileOf(ctl.identifier()),
          port + (arguments.first() == QLatin1String("stop") ? QByteArray("1\n") : port));
    childProcess process;
    ctl.prepare(process, arguments);
    process.start();
    QTRY_VERIFY_WITH_TIMEOUT(process.state() == QProcess::NotRunning, patienceMs);
    QTEST(process.exitCode(), "status");
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
}

void progressctlTest::keepsItsTimeLimit()
{
    const commandLineClient ctl(m_screen);
    QTcpServer silent;
    QVERIFY(silent.listen(QHostAddress::AnyIPv4));
    const QByteArray port = QByteArray::number(silent.serverPort()) + '\n';
    write(daemonProcess::lockFileOf(ctl.identifier()), port + port);
    for (const char *arguments : {"--limit 0.1 update 0 5", "ask x --timeout 0.1"}) {
        const auto result = ctl.run(words(arguments));
        QCOMPARE(result.status, 5);
        QCOMPARE(linesOf(result.errors), 1);
    }
}

void progressctlTest::printsRecords()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("runs"));
    write(file, "fileversion=2\n000000086400:00000095:00000003:00000000.00001007.\n");
    const commandLineClient ctl(m_screen);
    const auto result = ctl.run({QStringLiteral("records"), QStringLiteral("--file"), file});
    QCOMPARE(result.status, 0);
    const QByteArrayList lines = result.output.split('\n');
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[0].simplified(), QByteArray("run last seen seconds times snapshots"));
    const QByteArrayList fields = lines[1].simplified().split(' ');
    QCOMPARE(fields.size(), 6);
    QCOMPARE(fields.mid(3), (QByteArrayList{"95", "3", "2"}));
}

void progressctlTest::drawsRecords()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("runs"));
    const QString plot = folder.filePath(QStringLiteral("plot.svg"));
    write(file, "fileversion=2\n1:95:3:0.1007.\n");
    const commandLineClient ctl(m_screen);
    const QStringList arguments{QStringLiteral("records"), QStringLiteral("--file"), file,
                                QStringLiteral("--plot")};
    QCOMPARE(ctl.run(arguments + QStringList{plot}).status, 0);
    QVERIFY(read(plot).contains("<polyline"));
    QCOMPARE(ctl.run(arguments + QStringList{QStringLiteral("/nix/plot.svg")}).status, 7);
    QCOMPARE(ctl.run(arguments + QStringList{QStringLiteral("/dev/full")}).status, 7);
}

QTEST_GUILESS_MAIN(progressctlTest)
#include "progressctl.moc"
