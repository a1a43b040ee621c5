#include "tests/support/childProcess.h"
#include "tests/support/daemonProcess.h"

#include <QFile>
#include <QProcessEnvironment>
#include <QTest>

/// What the daemon says to its command line when there is no display at all.
class commandLineTest : public QObject
{
    Q_OBJECT

private slots:
    void answersWithoutDisplay_data();
    void answersWithoutDisplay();
};

void commandLineTest::answersWithoutDisplay_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QByteArray>("error");

    const QByteArray usage("usage: progressd IDENTIFIER [BASEPORT]\n");
    QTest::newRow("no argument") << QStringList{} << 2 << QByteArray() << usage;
    QTest::newRow("help") << QStringList{"--help"} << 0 << usage << QByteArray();
    QTest::newRow("version") << QStringList{"--version"} << 0 << QByteArray("progressd 1.") << QByteArray();
    // The statistics path holds 1023 characters, the lock file's 4095.
    for (const int length : {1000, 4072, 100'000})
        QTest::addRow("identifier of %d characters", length)
            << QStringList{QString(length, u'x')} << 2 << QByteArray() << QByteArray("progressd: ");
}

void commandLineTest::answersWithoutDisplay()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, status);
    QFETCH(QByteArray, output);
    QFETCH(QByteArray, error);

    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    childProcess process;
    process.setProcessEnvironment(environment);
    process.start(daemonProcess::executable(), arguments);
    QVERIFY(process.waitForFinished(patienceMs));

    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), status);
    const auto said = [](const QByteArray &text, const QByteArray &beginning) {
        return beginning.isEmpty() ? text.isEmpty() : text.startsWith(beginning);
    };
    QVERIFY(said(process.readAllStandardOutput(), output));
    const QByteArray written = process.readAllStandardError();
    QVERIFY(said(written, error));
    QVERIFY2(written.count('\n') <= 1, "one line");
}

QTEST_GUILESS_MAIN(commandLineTest)
#include "commandLineTest.moc"
