#include "stats/statisticsFile.h"

#include "stats/lineReader.h"
#include "stats/recordRun.h"
#include "tests/stats/situation.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <memory>
#include <sys/stat.h>

class statisticsFileTest : public QObject
{
    Q_OBJECT

    /// The records that loading `content` gives.
    int load(const QByteArray &content);

    std::unique_ptr<ownIdentifier> m_id;

private slots:
    void init();
    void cleanup() { m_id.reset(); }

    void reads_data();
    void reads();
    void timeOfLoading();
    void longestLine();
    void moreLinesThanRecords();
    void savesWhatItHasLoaded();

    void noFile();
    void loadsFromTheFirstFile();
    void saveTo_data();
    void saveTo();
    void notAFile();
    void longIdentifier();
};

void statisticsFileTest::init()
{
    startAnew();
    m_id = std::make_unique<ownIdentifier>();
}

int statisticsFileTest::load(const QByteArray &content)
{
    writeFile(m_id->usualPath(), content);
    loadStatistics(m_id->name());
    return m_snapshotcount;
}

void statisticsFileTest::reads_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("records"); // as they are saved again, without their times
    const auto row = [](const char *name, const QByteArray &content, const QByteArray &records) {
        QTest::newRow(name) << content << records;
    };
    const QByteArray v2("fileversion=2\n");
    const QByteArray usual("00000095:00000003:00000000.00000007.\n");
    const QByteArray empty("00000096:00000004:\n");
    row("only the version", v2, "");
    row("carriage returns", "fileversion=2\r\n1:95:3:0.\r7.\r\n2:96:4:\r\n", usual + empty);
    row("no last line feed", v2 + "1:95:3:0.7.", usual);
    row("long last line without one", v2 + "000000000001:" + usual.chopped(1), usual);
    row("no last full stop", v2 + "1:95:3:0.7\n", usual);
    row("version 1", "95:3:0.7.\n94:3\n96:4:\n", usual + empty);
    row("version 3 is read as 1", "fileversion=3\n95:3:0.7.\n", usual);
    row("version 2 is not taken back", v2 + "fileversion=1\n1:95:3:0.7.\n", usual);
    row("before the version", "95:3:0.7.\n" + v2 + "1:96:4:\n", usual + empty);
    row("version not at its place", "# fileversion=2\n95:3:0.7.\n", usual);
    row("totals that are none", v2 + "1:0:3:0.\n1:-5:3:0.\n1:x:3:0.\n1::3:0.\n1:95:3:0.7.\n", usual);
    row("short lines", v2 + "1:94:3\n\n1\n1:95:3:0.7.\n", usual);
    row("more fields", v2 + "1:95:3:0.7.:5.\n", usual);
    row("empty snapshots", v2 + "1:95:3:.7.\n", usual);
    row("unreadable numbers", v2 + "x: 95:+3:0x.7 .\n", usual);
    row("zero bytes", QByteArray(v2 + "1:94~:3:0.\n~~\n1:95:3:5~0.7.\n").replace('~', '\0'), usual);
    row("long numbers", v2 + "1:95:3:2147483647.-2147483648.0000000000000000005.2147483648.99999999999.\n",
        "00000095:00000003:2147483647.-2147483648.00000005.00000000.00000000.\n");
    row("more snapshots than a run has", v2 + "1:96:4:" + QByteArray("7.").repeated(5000) + '\n',
        empty.chopped(1) + QByteArray("00000007.").repeated(4094) + '\n');
}

void statisticsFileTest::reads()
{
    QFETCH(QByteArray, content);
    load(content);
    saveStatistics(nullptr);
    QByteArray records;
    for (const QByteArray &line : fileContent(datafile).split('\n').mid(1)) {
        if (!line.isEmpty())
            records += line.mid(13) + '\n';
    }
    QTEST(records, "records");
}

void statisticsFileTest::timeOfLoading()
{
    const QDateTime before = QDateTime::currentDateTime();
    QCOMPARE(load("95:3:0.7.\n"), 1);
    QVERIFY(m_snapshottime[0] >= before && m_snapshottime[0] <= QDateTime::currentDateTime());
    const qint64 seconds = m_snapshottime[0].toSecsSinceEpoch();
    saveStatistics(nullptr);
    QCOMPARE(fileContent(datafile), "fileversion=2\n" + QByteArray::number(seconds).rightJustified(12, '0') +
                                        ":00000095:00000003:00000000.00000007.\n");
}

void statisticsFileTest::longestLine()
{
    for (const int bytes : {65536, 65537, 1'000'000}) {
        const bool isRead = bytes == 65536;
        QByteArray line = "1:95:3:";
        while (line.size() < bytes)
            line += "1:96:3:7.";
        line.truncate(bytes);
        QCOMPARE(load("fileversion=2\n1:94:3:1.\n" + line + "\n1:97:3:1.\n" + line), isRead ? 4 : 2);
        QCOMPARE(m_snapshottotal[1], isRead ? 95 : 97);
    }
}

void statisticsFileTest::moreLinesThanRecords()
{
    QByteArray content = "fileversion=2\n";
    for (int total = 0; total <= 2000; ++total)
        content += "1:" + QByteArray::number(total) + ":3:7.\n";
    QCOMPARE(load(content), 1024);
    QCOMPARE(m_snapshottotal[0], 1);
    QCOMPARE(m_snapshottotal[1023], 1024);
}

void statisticsFileTest::savesWhatItHasLoaded()
{
    const QByteArray kept(
        "fileversion=2\n"
        "001447671234:00000095:00000040:00000000.00001007.-0000015.\n"
        "002147483647:2147483647:00000007:12345678.100000000.-9999999.-10000000.-2147483648.\n"
        "000000000000:00000001:00000001:\n");
    QCOMPARE(load(kept + "1:96:0:7.\n1:97:-1:7.\n"), 5);
    const daemonLog log;
    saveStatistics(nullptr);
    QCOMPARE(fileContent(datafile), kept);
    saveStatistics(m_id->name());
    QCOMPARE(fileContent(datafile), kept);
    QVERIFY(hasLines(log, {"---- saving intermediate data with entry count result=0005",
                           "---- saving statistic data with entry count result=0005",
                           "---- total statistics count result=0047"}));
    // Those that stand for no run are left out of the file only.
    QCOMPARE(m_snapshotcount, 5);
}

void statisticsFileTest::noFile()
{
    loadStatistics(m_id->name());
    QCOMPARE(m_snapshotcount, 0);
    addRecord(95, 1, {7});

    // The save after a run goes to the path that loading tried last, the final one to the first that works.
    saveStatistics(nullptr);
    QVERIFY(QFileInfo::exists(m_id->fallbackPath()));
    QVERIFY(!QFileInfo::exists(m_id->firstPath()));
    saveStatistics(m_id->name());
    QCOMPARE(QByteArray(datafile), m_id->usualPath());
    QCOMPARE(QFileInfo::exists(m_id->firstPath()), ownIdentifier::firstIsUsable());
}

void statisticsFileTest::loadsFromTheFirstFile()
{
    if (!ownIdentifier::firstIsUsable())
        QSKIP("/var/instrument cannot be written");
    writeFile(m_id->firstPath(), "fileversion=2\n1:95:1:7.\n");
    writeFile(m_id->fallbackPath(), "fileversion=2\n1:96:1:7.\n");
    loadStatistics(m_id->name());
    QCOMPARE(m_snapshottotal[0], 95);
    QCOMPARE(QByteArray(datafile), m_id->firstPath());
    QVERIFY(QFile::remove(m_id->firstPath()) && QDir().mkdir(m_id->firstPath()));
    loadStatistics(m_id->name());
    QCOMPARE(m_snapshottotal[0], 96);
    QCOMPARE(QByteArray(datafile), m_id->fallbackPath());
}

void statisticsFileTest::saveTo_data()
{
    QTest::addColumn<bool>("isIntermediate");
    QTest::addColumn<bool>("isBlocked");

    QTest::newRow("final") << false << false;
    QTest::newRow("final, blocked") << false << true;
    QTest::newRow("intermediate") << true << false;
    QTest::newRow("intermediate, blocked") << true << true;
}

void statisticsFileTest::saveTo()
{
    QFETCH(bool, isIntermediate);
    QFETCH(bool, isBlocked);
    if (!ownIdentifier::firstIsUsable())
        QSKIP("/var/instrument cannot be written");
    writeFile(m_id->firstPath(), "fileversion=2\n1:95:1:7.\n");
    loadStatistics(m_id->name());
    if (isBlocked)
        QVERIFY(QFile::remove(m_id->firstPath()) && QDir().mkdir(m_id->firstPath()));
    m_snapshotfound[0] = 2;
    saveStatistics(isIntermediate ? nullptr : m_id->name());
    const QByteArray used = isBlocked ? m_id->fallbackPath() : m_id->firstPath();
    QCOMPARE(QByteArray(datafile), used);
    QCOMPARE(fileContent(used), "fileversion=2\n000000000001:00000095:00000002:00000007.\n");
    QCOMPARE(QFileInfo::exists(m_id->fallbackPath()), isBlocked);

    // Unblocked again, the save after a run stays where it is; the final one goes back.
    QDir().rmdir(m_id->firstPath());
    saveStatistics(nullptr);
    QCOMPARE(QByteArray(datafile), used);
    saveStatistics(m_id->name());
    QCOMPARE(QByteArray(datafile), m_id->firstPath());
}

void statisticsFileTest::notAFile()
{
    if (ownIdentifier::firstIsUsable())
        QVERIFY(QDir().mkdir(m_id->firstPath()));
    QCOMPARE(mkfifo(m_id->fallbackPath().constData(), 0666), 0);
    const int record = addRecord(95, 1, {7});
    loadStatistics(m_id->name());
    saveStatistics(nullptr);
    saveStatistics(m_id->name());
    QCOMPARE(m_snapshotcount, 1);
    QCOMPARE(recordCourse(record), course{7});
    QVERIFY(!QFileInfo(QString::fromLatin1(m_id->fallbackPath())).isFile());
}

void statisticsFileTest::longIdentifier()
{
    const QByteArray longest(1023 - 38, 'x');
    QVERIFY(statisticsPathFits(longest.constData()));
    QVERIFY(!statisticsPathFits((longest + 'x').constData()));

    const QByteArray tooLong(5000, 'x');
    addRecord(95, 1, {7});
    loadStatistics(tooLong.constData());
    QCOMPARE(datafile[0], '\0');
    saveStatistics(nullptr);
    saveStatistics(tooLong.constData());
    QCOMPARE(m_snapshotcount, 1);
}

QTEST_APPLESS_MAIN(statisticsFileTest)
#include "statisticsFileTest.moc"
