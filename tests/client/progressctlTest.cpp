#include "tests/client/commandLineClient.h"
#include "tests/support/daemonProcess.h"

#include <QFile>
#include <QTcpServer>
#include <QTest>

/// The verbs of progressctl against the real daemon, apart from `pipe`.
class progressctlTest : public QObject
{
    Q_OBJECT

private slots:
    void refuses();
    void startsAndStops();
    void startsOnThePortThatIsAsked();
    void says();
    void showsAWindow();
    void asks();
    void printsEventsAsTheyCome();
    void endsEventsWithItsReader();
    void meetsStrangeDaemons();
    void keepsItsTimeLimit();
    void showsRecords();

private:
    virtualScreen m_screen{virtualScreen::withOpenbox};
};

namespace
{

/// A server that passes for the daemon of the client's identifier.
class strangeDaemon : public QTcpServer
{
public:
    explicit strangeDaemon(const commandLineClient &ctl)
    {
        if (!listen(QHostAddress::AnyIPv4))
            QTest::qFail("no port to listen on", __FILE__, __LINE__);
        const QByteArray port = QByteArray::number(serverPort()) + '\n';
        writeFile(lockFileOf(ctl.identifier()), port + port);
    }
};

} // namespace

void progressctlTest::refuses()
{
    struct {
        const char *arguments;
        int status;
        const char *message; // a part of the one line
    } const calls[] = {
        {"", 2, "a verb is missing"},
        {"bar 0 x --nix", 2, "--nix"},
        {"bar 0", 2, "TEXT"},
        {"update 0 5x", 2, "PERCENT"},
        {"start 70000", 2, "PORT"},
        {"--limit 0 activate", 2, "--limit"},
        {"busy maybe", 2, "maybe"},
        {"ask x --icon nix", 2, "nix"},
        {"ask x nix", 2, "no button \"nix\"; there are ok,"},
        {"configure Window=1", 2, "no setting \"Window\""},
        {"configure", 2, "nothing to configure"},
        {"configure --file /nix", 7, "/nix"},
        {"start --theme /nix", 7, "/nix"},
        {"-i a/b start", 2, "identifier"},
        {"update 0 5", 3, "no daemon"},
        {"stop", 3, "no daemon"},
        {"records", 7, "currentTimestamps_"},
        {"records --file /dev/null --plot /nix/plot.svg", 7, "/nix"},
        {"records --file /dev/null --plot /dev/full", 7, "/dev/full"},
    };
    const commandLineClient ctl(m_screen);
    for (const auto &call : calls) {
        const auto result = ctl.run(call.arguments);
        QVERIFY2(result.status == call.status && result.errors.count('\n') == 1, call.arguments);
        QVERIFY2(result.errors.startsWith("progressctl: ") && result.errors.contains(call.message),
                 result.errors);
    }
}

void progressctlTest::startsAndStops()
{
    const commandLineClient ctl(m_screen);
    const auto first = ctl.run("start");
    QCOMPARE(first.status, 0);
    QCOMPARE(first.errors, QByteArray());
    QCOMPARE(first.output.simplified(), contentOf(lockFileOf(ctl.identifier())).simplified());
    const auto second = ctl.run("start");
    QCOMPARE(second.status, 0);
    QCOMPARE(second.output, first.output);
    QVERIFY(second.errors.contains("already runs"));

    QCOMPARE(ctl.run("update 0 5").status, 0);
    QCOMPARE(ctl.run("stop").status, 0);
    QVERIFY(!QFile::exists(lockFileOf(ctl.identifier())));
    QCOMPARE(ctl.run("update 0 5").status, 3);
}

void progressctlTest::startsOnThePortThatIsAsked()
{
    QTcpServer taken;
    QVERIFY(taken.listen(QHostAddress::AnyIPv4));
    const QString startThere = QStringLiteral("start %1").arg(taken.serverPort());
    const commandLineClient ctl(m_screen);
    const auto refused = ctl.run(startThere);
    QCOMPARE(refused.status, 3);
    QVERIFY2(refused.errors.contains("is taken"), refused.errors);

    QCOMPARE(ctl.run("start").status, 0);
    const auto elsewhere = ctl.run(startThere);
    QCOMPARE(elsewhere.status, 3);
    QVERIFY2(elsewhere.errors.contains("already runs"), elsewhere.errors);
}

/// The bytes that reach a daemon, here one that is none.
void progressctlTest::says()
{
    const std::pair<const char *, QByteArray> calls[] = {
        {"bar 3 Copying", "<progress>create:3;Copying</progress>"},
        {"bar 3 -- -x", "<progress>create:3;-x</progress>"},
        {"update 3 -1", "<progress>update:3;-1</progress>"},
        {"remove 3", "<progress>remove:3</progress>"},
        {"text 1 update", "<progress>addText:1;update</progress>"},
        {"update-text 1 x", "<progress>updateText:1;x</progress>"},
        {"remove-text 1", "<progress>delText:1</progress>"},
        {"button 9 Stop", "<progress>addButt:9;Stop</progress>"},
        {"remove-button 9", "<progress>delButt:9</progress>"},
        {"activate", "<progress>activate</progress>"},
        {"pause", "<progress>messageStart</progress>"},
        {"resume", "<progress>messageStop</progress>"},
        {"busy on", "<progress>busyOn</progress>"},
        {"busy off", "<progress>busyOff</progress>"},
        {"configure windowTitle=a=b windowModal=on",
         "<configuration>windowTitle=a=b;windowModal=on;</configuration>"},
        {"send <x>;y", "<x>;y"},
        // With whoever answers nothing, the message is all that comes of it.
        {"--limit 5 ask --timeout 0.2 --title Copy --icon Warning --default NO-To_all Sure? YES notoall",
         "<msgbox>2[#]Copy[#]Sure?[#]16384[#]131328</msgbox>"},
        {"ask --timeout 0.2 Sure?", "<msgbox>4[#]Question[#]Sure?[#]16384[#]65536</msgbox>"},
        {"assert --timeout 0.2 a;b", "<assert>a;b</assert>"},
    };
    for (const auto &[arguments, message] : calls) {
        const commandLineClient ctl(m_screen);
        strangeDaemon server(ctl);
        childProcess process;
        ctl.start(process, arguments);
        QVERIFY(server.waitForNewConnection(patienceMs));
        QTcpSocket *channel = server.nextPendingConnection();
        QByteArray received;
        while (received.size() < message.size() && channel->waitForReadyRead(patienceMs))
            received += channel->readAll();
        channel->disconnectFromHost();
        QVERIFY(process.waitForFinished(patienceMs));
        QCOMPARE(received, message);
    }
}

void progressctlTest::showsAWindow()
{
    const commandLineClient ctl(m_screen);
    const QString title = ctl.identifier();
    QCOMPARE(ctl.run("start --theme dark").status, 0);
    QCOMPARE(ctl.run("configure windowTitle=" + title).status, 0);
    QCOMPARE(ctl.run("bar 0 \"K\u00e4se \u2713\"").status, 0);
    const auto window = m_screen.waitForWindow(title);
    // The screen's size was found out when the daemon was started.
    const QPoint distance = window.area.center() - QPoint(400, 300);
    QVERIFY2(distance.manhattanLength() <= 4, "the window is not in the middle of the screen");
    QCOMPARE(ctl.run("remove 0").status, 0);
    QTRY_VERIFY_WITH_TIMEOUT(!m_screen.shows(title), patienceMs);
}

void progressctlTest::asks()
{
    struct {
        const char *arguments;
        const char *title;
        const char *key;
        QByteArray printed;
        int status;
    } const calls[] = {
        {"ask Sure? yes no --default yes --title Copy", "Copy", "Return", "yes\n", 0},
        {"ask Sure? save discard cancel", "Question", "Escape", "cancel\n", 1},
        {"assert nix", "Zerbak Quillet Assertion", "Escape", "abort\n", 1},
    };
    const commandLineClient ctl(m_screen);
    QCOMPARE(ctl.run("start").status, 0);
    for (const auto &call : calls) {
        childProcess process;
        ctl.start(process, call.arguments);
        QVERIFY(m_screen.waitForFocus(call.title).id);
        m_screen.key(call.key);
        const auto result = ctl.resultOf(process);
        QCOMPARE(result.output, call.printed);
        QCOMPARE(result.status, call.status);
    }
}

void progressctlTest::printsEventsAsTheyCome()
{
    const commandLineClient ctl(m_screen);
    QCOMPARE(ctl.run("start").status, 0);
    childProcess events;
    ctl.start(events, "events");
    QByteArray heard;
    const auto hears = [&](const QString &arguments, const char *line) {
        // The first tries may come before it listens.
        ctl.run(arguments);
        events.waitForReadyRead(100);
        heard += events.readAllStandardOutput();
        return heard.contains(line);
    };
    QTRY_VERIFY_WITH_TIMEOUT(hears("activate", "isActivated\n"), patienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(hears("bar 0 x", "isShown\n"), patienceMs);
    QTRY_VERIFY_WITH_TIMEOUT(hears("update 0 50", "totalProgress=50|-1\n"), patienceMs);
    QCOMPARE(ctl.run("stop").status, 0);
    const auto result = ctl.resultOf(events);
    QCOMPARE(result.errors, QByteArray());
    QCOMPARE(result.status, 0);
}

void progressctlTest::endsEventsWithItsReader()
{
    const commandLineClient ctl(m_screen);
    QCOMPARE(ctl.run("start").status, 0);
    QCOMPARE(ctl.runScript("progressctl events | :; echo ${PIPESTATUS[0]}").output, QByteArray("0\n"));
}

/// A server that sends `answer` and hangs up without reading.
void progressctlTest::meetsStrangeDaemons()
{
    struct {
        const char *arguments;
        QByteArray answer;
        int status;
    } const meetings[] = {
        {"update 0 5", "", 4},
        {"ask x", QByteArray("\0\x40", 2), 4}, // half an answer
        {"ask x", "\1\1\1\1", 1},              // of no button
        {"events", QByteArray(100'000, 'x'), 4},
    };
    for (const auto &each : meetings) {
        const commandLineClient ctl(m_screen);
        strangeDaemon server(ctl);
        connect(&server, &QTcpServer::newConnection, &server, [&] {
            QTcpSocket *channel = server.nextPendingConnection();
            channel->write(each.answer);
            channel->disconnectFromHost();
        });
        childProcess process;
        ctl.start(process, each.arguments);
        QTRY_VERIFY_WITH_TIMEOUT(process.state() == QProcess::NotRunning, patienceMs);
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), each.status);
    }
}

void progressctlTest::keepsItsTimeLimit()
{
    const commandLineClient ctl(m_screen);
    const strangeDaemon silent(ctl);
    for (const char *arguments : {"--limit 0.1 update 0 5", "ask x --timeout 0.1"}) {
        const auto result = ctl.run(arguments);
        QCOMPARE(result.status, 5);
        QCOMPARE(result.errors.count('\n'), 1);
    }
}

void progressctlTest::showsRecords()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath("runs");
    const QString plot = folder.filePath("plot.svg");
    writeFile(file, "fileversion=2\n000000086400:00000095:00000003:00000000.00001007.\n");
    const commandLineClient ctl(m_screen);
    const auto result = ctl.run("records --file " + file + " --plot " + plot);
    QCOMPARE(result.status, 0);
    const QByteArrayList lines = result.output.split('\n');
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[0].simplified(), QByteArray("run last seen seconds times snapshots"));
    QVERIFY2(lines[1].simplified().endsWith(" 95 3 2"), lines[1]);
    QVERIFY(contentOf(plot).contains("<polyline"));
}

QTEST_GUILESS_MAIN(progressctlTest)
#include "progressctlTest.moc"
