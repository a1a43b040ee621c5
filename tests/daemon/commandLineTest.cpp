#include "tests/support/childProcess.h"
#include "tests/support/daemonProcess.h"

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
    QTest::addColumn<QByteArray>("output"); // how it begins
    QTest::addColumn<QByteArray>("error");
    const QByteArray usage("usage: progressd IDENTIFIER [BASEPORT]\n");
    QTest::newRow("no argument") << QStringList{} << 2 << QByteArray() << usage;
    QTest::newRow("help") << QStringList{"--help"} << 0 << usage << QByteArray();
    QTest::newRow("version") << QStringList{"--version"} << 0 << QByteArray("progressd 1.") << QByteArray();
    // The statistics path holds 1023 characters, the lock file's 4095.
    for (const int length : {1000, 4072, 100'000})
        QTest::addRow("identifier of %d characters", length)
            << QStringList{QString(length, u'x')} << 2 << QByteArray()
            << QByteArray("progressd: the identifier is too long\n");
}

void commandLineTest::answersWithoutDisplay()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, output);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(name);
    childProcess process;
    process.setProcessEnvironment(environment);
    process.start(daemonProcess::executable(), arguments);
    QVERIFY(process.waitForFinished(patienceMs));

    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QTEST(process.exitCode(), "status");
    const QByteArray printed = process.readAllStandardOutput();
    QVERIFY2(printed.startsWith(output) && printed.isEmpty() == output.isEmpty(), printed);
    QTEST(process.readAllStandardError(), "error");
}

QTEST_GUILESS_MAIN(commandLineTest)
#include "commandLineTest.moc"
