#include "tests/client/commandLineClient.h"
#include "tests/support/daemonProcess.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>

/// `progressctl pipe` with real writers and the real daemon.
class pipeTest : public QObject
{
    Q_OBJECT

private slots:
    void ends_data();
    void ends();
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

    virtualScreen m_screen{virtualScreen::withOpenbox};
};

void pipeTest::pressReturnIn(const QString &title)
{
    QVERIFY(m_screen.waitForFocus(title).id);
    m_screen.key("Return");
}

namespace
{

/// Starts a daemon for several clients, whose window has its identifier for a title.
bool startShared(const commandLineClient &ctl)
{
    return ctl.run("start").status == 0 &&
           ctl.run("configure windowModal=off windowTitle=" + ctl.identifier()).status == 0;
}

quint16 eventPortOf(const commandLineClient &ctl)
{
    return daemonProcess::portsOf(ctl.identifier()).value_or(daemonProcess::ports()).event;
}

} // namespace

void pipeTest::ends_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("message"); // a part of standard error, or empty
    const auto row = [](const char *name, const char *script, int status, const char *message = "") {
        QTest::newRow(name) << QString(script) << status << QByteArray(message);
    };
    row("incomplete", "seq 0 30 | progressctl pipe", 0);
    row("incomplete, expected complete", "seq 0 30 | progressctl pipe --expect-complete", 6,
        "ended at 30 percent");
    row("complete as expected", "progressctl pipe --expect-complete -- seq 0 100", 0);
    row("failing command", "progressctl pipe -- sh -c 'echo 30; exit 7'", 7);
    row("killed command", "progressctl pipe -- sh -c 'kill -9 $$'", 137);
    row("missing command", "progressctl pipe -- /nix/command", 127, "/nix/command");
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
    row("no input to read", "progressctl pipe <&-", 0);
    row("text that cannot be carried", "printf '#<exit/>\\0\\n' | progressctl pipe --slot 9", 0);
    row("zero bytes for ever", "head -c 9000000 /dev/zero | progressctl pipe", 0, "too long");
    row("bad percentage", "progressctl pipe --percentage 101 </dev/null", 2, "--percentage");
    row("no such theme", "progressctl pipe --theme /nix </dev/null", 7, "/nix");
    row("no daemon, runs nothing", "PROGRESSD=/nix progressctl pipe -- sh -c 'kill -9 $PPID'", 3, "/nix");
}

void pipeTest::ends()
{
    QFETCH(QString, script);
    QFETCH(QByteArray, message);
    const commandLineClient ctl(m_screen);
    const auto result = ctl.runScript(script);
    QVERIFY2(result.errors.contains(message) && result.errors.isEmpty() == message.isEmpty(), result.errors);
    QTEST(result.status, "status");
}

/// However many lines there are, the daemon hears of no more than 25 percents a second, and of the last.
void pipeTest::tellsTheNewestOnly()
{
    const commandLineClient ctl(m_screen);
    QVERIFY(startShared(ctl));
    clientChannel events(eventPortOf(ctl));
    QVERIFY(events.isServed());
    QElapsedTimer clock;
    clock.start();
    const char *script = "(yes 7 | head -n 1000000; for i in $(seq 99); do echo $i; sleep 0.01; done) |"
                         "progressctl pipe --no-cancel";
    QCOMPARE(ctl.runScript(script).status, 0);
    const auto elapsed = clock.elapsed();
    const QStringList percents = events.eventsUntil("isHidden").split(' ').filter("totalProgress=");
    QVERIFY2(percents.size() <= elapsed / 40 + 5, qPrintable(QString::number(percents.size())));
    QVERIFY2(percents.contains("totalProgress=99|-1"), qPrintable(percents.join(' ')));
}

void pipeTest::showsTexts()
{
    const commandLineClient ctl(m_screen);
    childProcess process;
    ctl.start(process, "pipe --no-cancel --title " + ctl.identifier());
    const auto window = m_screen.waitForWindow(ctl.identifier());
    QVERIFY(window.id);
    QTest::qWait(200);
    const QImage without = m_screen.picture().copy(window.area);
    process.write("#a text\n");
    QTRY_VERIFY_WITH_TIMEOUT(m_screen.picture().copy(window.area) != without, patienceMs);
    process.closeWriteChannel();
    QCOMPARE(ctl.resultOf(process).status, 0);
}

void pipeTest::cancels_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QByteArray>("printed");
    const auto row = [](const char *name, const char *script, const char *printed) {
        QTest::newRow(name) << QString(script) << QByteArray(printed);
    };
    row("writer",
        "exec 3< <(echo 30; exec sleep 99); w=$!; progressctl pipe --title $TITLE <&3;"
        "s=$?; kill -0 $w && kill $w; echo $s",
        "1\n");
    row("writer that is ended",
        "exec 3< <(echo 30; exec sleep 99); w=$!; progressctl pipe --title $TITLE --auto-kill <&3;"
        "s=$?; wait $w; echo $s $?",
        "1 143\n");
    row("writer with children",
        "(echo 30; sleep 99) | progressctl pipe --title $TITLE --auto-kill; echo ${PIPESTATUS[@]}",
        "143 1\n");
    row("command",
        "progressctl pipe --title $TITLE --auto-kill --cancel-status 42 -- sh -c 'echo 30; sleep 99'; echo "
        "$?",
        "42\n");
}

void pipeTest::cancels()
{
    QFETCH(QString, script);
    const commandLineClient ctl(m_screen);
    childProcess process;
    ctl.startScript(process, "TITLE=" + ctl.identifier() + "; " + script);
    pressReturnIn(ctl.identifier());
    const auto result = ctl.resultOf(process);
    QTEST(result.output, "printed");
    QCOMPARE(result.errors, QByteArray());
}

void pipeTest::waitsForItsButton()
{
    const commandLineClient ctl(m_screen);
    childProcess process;
    ctl.start(process, "pipe --wait --title " + ctl.identifier());
    process.write("100\n");
    process.closeWriteChannel();
    QVERIFY(!process.waitForFinished(300));
    pressReturnIn(ctl.identifier());
    QCOMPARE(ctl.resultOf(process).status, 0);
}

/// The daemon serves event channels up to the first one that has gone, and does not say so.
void pipeTest::hearsCancelAfterAnotherClientHasGone()
{
    const commandLineClient ctl(m_screen);
    QVERIFY(startShared(ctl));
    clientChannel older(eventPortOf(ctl));
    QVERIFY(older.isServed());
    childProcess process;
    ctl.start(process, "pipe --cancel-status 9");
    QVERIFY(older.hears("isShown"));
    older.close();
    for (int i = 1; process.state() != QProcess::NotRunning && i < 300; ++i) {
        process.write(i % 2 ? "50\n" : "0\n");
        process.waitForBytesWritten();
        if (!process.waitForFinished(500) && i > 5)
            pressReturnIn(ctl.identifier());
    }
    QCOMPARE(process.exitCode(), 9);
}

void pipeTest::survivesItsDaemon_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");
    QTest::newRow("reading") << "exec 3< <(exec sleep 99); w=$!; progressctl pipe <&3; s=$?; kill $w; exit $s"
                             << 4;
    QTest::newRow("running a command") << "progressctl pipe -- sh -c 'echo 5; sleep 2; echo 10; exit 3'" << 3;
}

void pipeTest::survivesItsDaemon()
{
    QFETCH(QString, script);
    const commandLineClient ctl(m_screen);
    QVERIFY(startShared(ctl));
    childProcess process;
    ctl.startScript(process, script);
    QVERIFY(m_screen.waitForWindow(ctl.identifier()).id);
    QCOMPARE(ctl.run("stop").status, 0);
    const auto result = ctl.resultOf(process);
    QTEST(result.status, "status");
    QCOMPARE(result.errors.count('\n'), 1);
}

void pipeTest::takesItsWindowAwayWhenItIsEnded()
{
    const commandLineClient ctl(m_screen);
    QVERIFY(startShared(ctl));
    childProcess process;
    ctl.start(process, "pipe --text x");
    QVERIFY(m_screen.waitForWindow(ctl.identifier()).id);
    process.terminate();
    QVERIFY(process.waitForFinished(patienceMs));
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QCOMPARE(process.exitCode(), SIGTERM);
    QTRY_VERIFY_WITH_TIMEOUT(!m_screen.shows(ctl.identifier()), patienceMs);
}

void pipeTest::endsItsOwnDaemon()
{
    const commandLineClient ctl(m_screen);
    const QString own = ctl.identifier() + "-pipe";
    childProcess process;
    ctl.start(process, "pipe --title " + ctl.identifier());
    // Before that the daemon might have had no client whose end it could notice.
    QVERIFY(m_screen.waitForWindow(ctl.identifier()).id);
    process.kill();
    QVERIFY(process.waitForFinished(patienceMs));
    QTRY_VERIFY_WITH_TIMEOUT(!daemonProcess::portsOf(own), patienceMs);
    // The last that it does; the file is removed with the others of this test.
    QTRY_VERIFY_WITH_TIMEOUT(!statisticsOf(own).isEmpty(), patienceMs);
}

void pipeTest::givesEachPipeADaemon()
{
    const commandLineClient ctl(m_screen);
    childProcess pipes[2];
    for (childProcess &each : pipes)
        ctl.start(each, "pipe --title " + ctl.identifier());
    QTRY_COMPARE_WITH_TIMEOUT(m_screen.windows(ctl.identifier()).size(), 2, patienceMs);
    for (childProcess &each : pipes) {
        each.closeWriteChannel();
        QCOMPARE(ctl.resultOf(each).status, 0);
    }
    QVERIFY(!m_screen.shows(ctl.identifier()));
}

QTEST_GUILESS_MAIN(pipeTest)
#include "pipeTest.moc"
