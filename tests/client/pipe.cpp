#include "tests/client/commandLineClient.h"
#include "tests/support/clientChannel.h"
#include "tests/support/daemonProcess.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

/// `progressctl pipe` with real writers and the real daemon.
class pipeTest : public QObject
{
    Q_OBJECT

private slots:
    void ends_data();
    void ends();
    void runsNothingWithoutADaemon();
    void tellsTheNewestOnly();
    void showsTexts();
    void cancels_data();
    void cancels();
    void waitsForItsButton();
    void hearsCancelAfterAnotherClientHasGone();
    void survivesItsDaemon_data();
    void survivesItsDaemon();
    void takesItsWindowAwayWhenItIsEnded();
    void endsItsOwnDaemon();
    void givesEachPipeADaemon();

private:
    void pressReturnIn(const QString &title);
    static bool startShared(const commandLineClient &ctl);
    static quint16 portOf(const QString &identifier, int line);

    virtualScreen m_screen{virtualScreen::withOpenbox};
};

void pipeTest::pressReturnIn(const QString &title)
{
    const auto window = m_screen.waitForWindow(title);
    QVERIFY(window.id != 0);
    m_screen.run(QStringLiteral("xdotool"),
                 {QStringLiteral("windowactivate"), QStringLiteral("--sync"), QString::number(window.id),
                  QStringLiteral("key"), QStringLiteral("Return")});
}

bool pipeTest::startShared(const commandLineClient &ctl)
{
    return ctl.run({QStringLiteral("start")}).status == 0 &&
           ctl.run({QStringLiteral("configure"), QLatin1String("windowTitle=") + ctl.identifier(),
                    QStringLiteral("windowModal=off")})
                   .status == 0;
}

/// 0 for the command port, 1 for the event port; 0 when there is no daemon.
quint16 pipeTest::portOf(const QString &identifier, int line)
{
    QFile file(daemonProcess::lockFileOf(identifier));
    const QByteArrayList lines =
        file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QByteArrayList();
    return lines.size() == 3 ? lines[line].toUShort() : quint16{0};
}

void pipeTest::ends_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("message"); // a part of standard error, or empty
    const auto row = [](const char *name, const char *script, int status, const char *message = "") {
        QTest::newRow(name) << QString::fromUtf8(script) << status << QByteArray(message);
    };
    row("complete", "seq 0 100 | progressctl pipe", 0);
    row("nothing at all", "progressctl pipe </dev/null", 0);
    row("incomplete", "seq 0 30 | progressctl pipe", 0);
    row("incomplete, expected complete", "seq 0 30 | progressctl pipe --expect-complete", 6,
        "ended at 30 percent");
    row("complete as expected", "seq 0 100 | progressctl pipe --expect-complete", 0);
    row("command", "progressctl pipe -- seq 0 100", 0);
    row("failing command", "progressctl pipe -- sh -c 'echo 30; exit 7'", 7);
    row("killed command", "progressctl pipe -- sh -c 'kill -9 $$'", 137);
    row("missing command", "progressctl pipe -- /nix/command", 127, "/nix/command");
    row("incomplete command", "progressctl pipe --expect-complete -- echo 50", 6, "50");
    row("command that leaves a child", "progressctl pipe -- sh -c 'sleep 3 & echo 100'", 0);
    row("command that closes its output", "progressctl pipe -- sh -c 'exec >&-; sleep 0.2; exit 5'", 5);
    row("full and closed",
        "exec 3< <(echo 100; exec sleep 99); w=$!; progressctl pipe --auto-close <&3; s=$?; kill $w; exit $s",
        0);
    row("full and not closed", "(echo 100; sleep 0.1; echo 20) | progressctl pipe --expect-complete", 6,
        "20");
    row("command goes on when full", "progressctl pipe --auto-close -- sh -c 'echo 100; sleep 0.2; exit 3'",
        3);
    row("time is up",
        "exec 3< <(exec sleep 99); w=$!; progressctl pipe --timeout 0.2 <&3; s=$?; kill $w; exit $s", 5);
    row("options of others", "progressctl pipe --width=9 --pulsate --text x --title y </dev/null", 0,
        "--width is ignored");
    row("misunderstood", "printf '5,5\\n' | progressctl pipe", 0, "5,5");
    row("no input to read", "progressctl pipe <&-", 0);
    row("slot at the end", "printf '5\\n#text\\n' | progressctl pipe --slot 9", 0);
    row("text that cannot be carried", "printf '#<exit/>\\0\\n' | progressctl pipe", 0);
    row("zero bytes for ever", "head -c 9000000 /dev/zero | progressctl pipe", 0, "too long");
    row("bad percentage", "progressctl pipe --percentage 101 </dev/null", 2, "--percentage");
    row("no such theme", "progressctl pipe --theme /nix </dev/null", 7, "/nix");
}

void pipeTest::ends()
{
    QFETCH(QString, script);
    QFETCH(QByteArray, message);
    const commandLineClient ctl(m_screen);
    childProcess process;
    ctl.prepareScript(process, script);
    process.start();
    QVERIFY(process.waitForFinished(patienceMs));
    const QByteArray errors = process.readAllStandardError();
    QVERIFY2(errors.contains(message) && errors.isEmpty() == message.isEmpty(), errors.constData());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QTEST(process.exitCode(), "status");
}

void pipeTest::runsNothingWithoutADaemon()
{
    const QTemporaryDir folder;
    const commandLineClient ctl(m_screen);
    childProcess process;
    ctl.prepareScript(
        process,
        QStringLiteral("PROGRESSD=/nix/progressd progressctl pipe -- touch %1/ran").arg(folder.path()));
    process.start();
    QVERIFY(process.waitForFinished(patienceMs));
    QCOMPARE(process.exitCode(), 3);
    QVERIFY(!QFile::exists(folder.filePath(QStringLiteral("ran"))));
}

/// However many lines there are, the daemon hears of no more than 25 percents a second, and of the last.
void pipeTest::tellsTheNewestOnly()
{
    const commandLineClient ctl(m_screen);
    QVERIFY(startShared(ctl));
    clientChannel events(portOf(ctl.identifier(), 1));
    QVERIFY(events.isServed());
    QElapsedTimer clock;
    clock.start();
    childProcess process;
    ctl.prepareScript(process,
                      QStringLiteral("yes \"$(seq 0 99)\" | head -n 300000 | progressctl pipe --no-cancel"));
    process.start();
    QVERIFY(process.waitForFinished(patienceMs));
    QCOMPARE(process.exitCode(), 0);
    const auto elapsed = clock.elapsed();
    const QStringList heard = events.eventsUntil(QStringLiteral("isHidden")).split(QLatin1Char(' '));
    const auto percents = heard.filter(QStringLiteral("totalProgress="));
    QVERIFY2(percents.size() <= elapsed / 40 + 5, qPrintable(QString::number(percents.size())));
    QVERIFY2(percents.contains(QStringLiteral("totalProgress=99|-1")),
             qPrintable(percents.join(QLatin1Char(' '))));
}

void pipeTest::showsTexts()
{
    const commandLineClient ctl(m_screen);
    const QString title = ctl.identifier();
    childProcess process;
    ctl.prepare(process,
                {QStringLiteral("pipe"), QStringLiteral("--title"), title, QStringLiteral("--no-cancel")});
    process.start();
    const auto window = m_screen.waitForWindow(title);
    QVERIFY(window.id != 0);
    QTest::qWait(200);
    const QImage without = m_screen.picture().copy(window.area);
    process.write("#a text\n");
    QTRY_VERIFY_WITH_TIMEOUT(m_screen.picture().copy(window.area) != without, patienceMs);
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished(patienceMs));
    QCOMPARE(process.exitCode(), 0);
}

void pipeTest::cancels_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QByteArray>("printed");
    QTest::newRow("writer")
        << QStringLiteral("exec 3< <(echo 30; exec sleep 99); w=$!; progressctl pipe --title $TITLE <&3;"
                          "s=$?; kill -0 $w && kill $w; echo $s")
        << QByteArray("1\n");
    QTest::newRow("writer that is ended")
        << QStringLiteral(
               "exec 3< <(echo 30; exec sleep 99); w=$!; progressctl pipe --title $TITLE --auto-kill <&3;"
               "s=$?; wait $w; echo $s $?")
        << QByteArray("1 143\n");
    QTest::newRow("writer with children")
        << QStringLiteral(
               "(echo 30; sleep 99) | progressctl pipe --title $TITLE --auto-kill; echo ${PIPESTATUS[@]}")
        << QByteArray("143 1\n");
    QTest::newRow("command") << QStringLiteral("progressctl pipe --title $TITLE --auto-kill --cancel-status "
                                               "42 -- sh -c 'echo 30; sleep 99'; echo $?")
                             << QByteArray("42\n");
}

void pipeTest::cancels()
{
    QFETCH(QString, script);
    const commandLineClient ctl(m_screen);
    childProcess process;
    ctl.prepareScript(process, QStringLiteral("TITLE=%1; ").arg(ctl.identifier()) + script);
    process.start();
    pressReturnIn(ctl.identifier());
    QVERIFY(process.waitForFinished(patienceMs));
    QTEST(process.readAllStandardOutput(), "printed");
    QCOMPARE(process.readAllStandardError(), QByteArray());
}

void pipeTest::waitsForItsButton()
{
    const commandLineClient ctl(m_screen);
    childProcess process;
    ctl.prepare(process, {QStringLiteral("pipe"), QStringLiteral("--title"), ctl.identifier(),
                          QStringLiteral("--wait")});
    process.start();
    process.write("100\n");
    process.closeWriteChannel();
    QVERIFY(!process.waitForFinished(300));
    pressReturnIn(ctl.identifier());
    QVERIFY(process.waitForFinished(patienceMs));
    QCOMPARE(process.exitCode(), 0);
}

/// The daemon serves event channels up to the first one that has gone, and does not say so.
void pipeTest::hearsCancelAfterAnotherClientHasGone()
{
    const commandLineClient ctl(m_screen);
    QVERIFY(startShared(ctl));
    clientChannel older(portOf(ctl.identifier(), 1));
    QVERIFY(older.isServed());
    childProcess process;
    ctl.prepare(process, {QStringLiteral("pipe"), QStringLiteral("--cancel-status"), QStringLiteral("9")});
    process.start();
    QVERIFY(older.eventsUntil(QStringLiteral("isShown")).endsWith(QStringLiteral("isShown")));
    older.close();
    int percent = 0;
    while (process.state() != QProcess::NotRunning && percent < 300) {
        process.write(QByteArray::number(++percent % 2 * 50) + '\n');
        process.waitForBytesWritten();
        if (!process.waitForFinished(500) && percent > 5)
            pressReturnIn(ctl.identifier());
    }
    QCOMPARE(process.exitCode(), 9);
}

void pipeTest::survivesItsDaemon_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");
    QTest::newRow("reading")
        << QStringLiteral("exec 3< <(exec sleep 99); w=$!; progressctl pipe <&3; s=$?; kill $w; exit $s")
        << 4;
    QTest::newRow("running a command")
        << QStringLiteral("progressctl pipe -- sh -c 'echo 5; sleep 2; echo 10; exit 3'") << 3;
}

void pipeTest::survivesItsDaemon()
{
    QFETCH(QString, script);
    const commandLineClient ctl(m_screen);
    QVERIFY(startShared(ctl));
    childProcess process;
    ctl.prepareScript(process, script);
    process.start();
    QVERIFY(m_screen.waitForWindow(ctl.identifier()).id != 0);
    QCOMPARE(ctl.run({QStringLiteral("stop")}).status, 0);
    QVERIFY(process.waitForFinished(patienceMs));
    QTEST(process.exitCode(), "status");
    QCOMPARE(process.readAllStandardError().count('\n'), 1);
}

void pipeTest::takesItsWindowAwayWhenItIsEnded()
{
    const commandLineClient ctl(m_screen);
    QVERIFY(startShared(ctl));
    childProcess process;
    ctl.prepare(process, {QStringLiteral("pipe"), QStringLiteral("--text"), QStringLiteral("x")});
    process.start();
    QVERIFY(m_screen.waitForWindow(ctl.identifier()).id != 0);
    process.terminate();
    QVERIFY(process.waitForFinished(patienceMs));
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QCOMPARE(process.exitCode(), SIGTERM);
    QTRY_VERIFY_WITH_TIMEOUT(!m_screen.shows(ctl.identifier()), patienceMs);
}

void pipeTest::endsItsOwnDaemon()
{
    const commandLineClient ctl(m_screen);
    const QString own = ctl.identifier() + QLatin1String("-pipe");
    childProcess process;
    ctl.prepare(process, {QStringLiteral("pipe")});
    process.start();
    QTRY_VERIFY_WITH_TIMEOUT(portOf(own, 0) != 0, patienceMs);
    process.kill();
    QVERIFY(process.waitForFinished(patienceMs));
    QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(daemonProcess::lockFileOf(own)), patienceMs);
}

void pipeTest::givesEachPipeADaemon()
{
    const commandLineClient ctl(m_screen);
    childProcess first;
    childProcess second;
    for (childProcess *each : {&first, &second}) {
        ctl.prepare(*each, {QStringLiteral("pipe"), QStringLiteral("--title"), ctl.identifier()});
        each->start();
    }
    QTRY_COMPARE_WITH_TIMEOUT(m_screen.windows(ctl.identifier()).size(), 2, patienceMs);
    for (childProcess *each : {&first, &second}) {
        each->closeWriteChannel();
        QVERIFY(each->waitForFinished(patienceMs));
        QCOMPARE(each->exitCode(), 0);
    }
    QVERIFY(!m_screen.shows(ctl.identifier()));
}

QTEST_GUILESS_MAIN(pipeTest)
#include "pipe.moc"
