#include "stats/statisticsFile.h"

#include "stats/lineReader.h"
#include "stats/recordRun.h"
#include "tests/stats/situation.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTest>

#include <csignal>
#include <memory>
#include <sys/resource.h>
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

    void layouts_data();
    void layouts();
    void timeOfLoading();
    void longestLine_data();
    void longestLine();
    void moreLinesThanRecords();
    void randomBytes();
    void roundTrip();
    void recordsWithoutFoundCount();
    void logLines();

    void noFile();
    void loadFrom_data();
    void loadFrom();
    void saveTo_data();
    void saveTo();
    void notAFile();
    void fullDisk();
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

void statisticsFileTest::layouts_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<course>("totals");
    QTest::addColumn<course>("lengths");

    QTest::newRow("empty") << QByteArray() << course{} << course{};
    QTest::newRow("only the version") << QByteArray("fileversion=2\n") << course{} << course{};
    QTest::newRow("version 2") << QByteArray("fileversion=2\n1:95:3:0.7.\n2:96:4:\n") << course{95, 96}
                               << course{2, 0};
    QTest::newRow("carriage returns")
        << QByteArray("fileversion=2\r\n1:95:3:0.7.\r\n2:96:4:\r\n") << course{95, 96} << course{2, 0};
    QTest::newRow("no last line feed") << QByteArray("fileversion=2\n1:95:3:0.7.") << course{95} << course{2};
    QTest::newRow("version 1") << QByteArray("95:3:0.7.\n96:4:\n") << course{95, 96} << course{2, 0};
    QTest::newRow("version 3 is read as 1")
        << QByteArray("fileversion=3\n95:3:0.7.\n") << course{95} << course{2};
    QTest::newRow("version 2 is not taken back")
        << QByteArray("fileversion=2\nfileversion=1\n1:95:3:0.7.\n") << course{95} << course{2};
    QTest::newRow("before the version")
        << QByteArray("95:3:0.7.\nfileversion=2\n1:96:3:0.\n") << course{95, 96} << course{2, 1};
    QTest::newRow("number not at its place")
        << QByteArray("# fileversion=2\n95:3:0.7.\n") << course{95} << course{2};
    QTest::newRow("version line is no record")
        << QByteArray("95:3:fileversion=2\n96:3:0.\n") << course{96} << course{1};
    QTest::newRow("totals that are none")
        << QByteArray("fileversion=2\n1:0:3:0.\n1:-5:3:0.\n1:x:3:0.\n1::3:0.\n1:95:3:0.7.8.\n") << course{95}
        << course{3};
    QTest::newRow("short lines") << QByteArray("fileversion=2\n1:94:3\n\n1\n1:95:3:0.7.\n") << course{95}
                                 << course{2};
    QTest::newRow("zero bytes")
        << QByteArray("fileversion=2\n1:94~:3:0.\n~~\n1:95:3:0.7.\n").replace('~', '\0') << course{95}
        << course{2};
}

void statisticsFileTest::layouts()
{
    QFETCH(QByteArray, content);
    QFETCH(course, totals);
    QFETCH(course, lengths);
    QCOMPARE(load(content), static_cast<int>(totals.size()));
    QCOMPARE(course(m_snapshottotal, m_snapshottotal + m_snapshotcount), totals);
    QCOMPARE(course(m_snapshottlen, m_snapshottlen + m_snapshotcount), lengths);
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

void statisticsFileTest::longestLine_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<bool>("isRead");

    QTest::newRow("longest run") << 4094 * 9 << true;
    QTest::newRow("64 KiB") << 65536 << true;
    QTest::newRow("one more") << 65537 << false;
    QTest::newRow("longer than the buffer") << 1'000'000 << false;
}

void statisticsFileTest::longestLine()
{
    QFETCH(int, bytes);
    QFETCH(bool, isRead);
    QByteArray line = "1:95:3:";
    while (line.size() < bytes)
        line += "1:96:3:7.";
    line.truncate(bytes);
    QCOMPARE(load("fileversion=2\n1:94:3:1.\n" + line + "\n1:97:3:1.\n" + line), isRead ? 4 : 2);
    QCOMPARE(m_snapshottotal[1], isRead ? 95 : 97);
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

void statisticsFileTest::randomBytes()
{
    QRandomGenerator random(1447671234);
    for (int round = 0; round < 50; ++round) {
        QByteArray noise(20'000, '\0');
        for (char &byte : noise)
            byte = round % 2 ? static_cast<char>(random.generate()) : ":.0123456789\n-"[random.bounded(14)];
        load("fileversion=2\n1:95:3:0.7.\n" + noise + "\n1:96:3:0.7.\n");
        QVERIFY(m_snapshotcount >= 2);
        QCOMPARE(m_snapshottotal[0], 95);
        QVERIFY(m_snapshotcount == 1024 || m_snapshottotal[m_snapshotcount - 1] == 96);
    }
}

void statisticsFileTest::roundTrip()
{
    QRandomGenerator random(4094);
    load("");
    struct record {
        qint64 time;
        int total, found;
        course snapshots;
    };
    std::vector<record> records;
    for (int i = 0; i < 200; ++i) {
        record next = {random.bounded(2147483647), 1 + random.bounded(i % 2 ? 100 : 2147483646),
                       1 + random.bounded(i % 2 ? 10 : 2147483646), course(random.bounded(200u))};
        for (int &snapshot : next.snapshots)
            snapshot = static_cast<int>(random.generate()) >> random.bounded(32);
        addRecord(next.total, next.found, next.snapshots, next.time);
        records.push_back(next);
    }
    saveStatistics(nullptr);
    const QByteArray saved = fileContent(datafile);
    startAnew();
    loadStatistics(m_id->name());
    QCOMPARE(m_snapshotcount, 200);
    for (int i = 0; i < 200; ++i) {
        const record &expected = records[static_cast<std::size_t>(i)];
        QCOMPARE(m_snapshottime[i].toSecsSinceEpoch(), expected.time);
        QCOMPARE(m_snapshottotal[i], expected.total);
        QCOMPARE(m_snapshotfound[i], expected.found);
        QCOMPARE(recordCourse(i), expected.snapshots);
    }
    saveStatistics(nullptr);
    QCOMPARE(fileContent(datafile), saved);
}

void statisticsFileTest::recordsWithoutFoundCount()
{
    QCOMPARE(load("fileversion=2\n1:95:0:7.\n1:96:-1:7.\n1:97:1:7.\n"), 3);
    saveStatistics(nullptr);
    QCOMPARE(fileContent(datafile), "fileversion=2\n000000000001:00000097:00000001:00000007.\n");
    QCOMPARE(m_snapshotcount, 3);
}

void statisticsFileTest::logLines()
{
    load("fileversion=2\n1:95:40:7.\n1:96:7:7.\n");
    const logWatch log;
    saveStatistics(nullptr);
    saveStatistics(m_id->name());
    QVERIFY(log.contains({"---- saving intermediate data with entry count result=0002",
                          "---- total statistics count result=0047",
                          "---- saving statistic data with entry count result=0002",
                          "---- total statistics count result=0047"}));
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

void statisticsFileTest::loadFrom_data()
{
    QTest::addColumn<bool>("isDirectory");
    QTest::addColumn<int>("total");

    QTest::newRow("first path") << false << 95;
    QTest::newRow("a directory there") << true << 96;
}

void statisticsFileTest::loadFrom()
{
    QFETCH(bool, isDirectory);
    QFETCH(int, total);
    if (!ownIdentifier::firstIsUsable())
        QSKIP("/var/instrument cannot be written");
    if (isDirectory)
        QVERIFY(QDir().mkdir(m_id->firstPath()));
    else
        writeFile(m_id->firstPath(), "fileversion=2\n1:95:1:7.\n");
    writeFile(m_id->fallbackPath(), "fileversion=2\n1:96:1:7.\n");
    loadStatistics(m_id->name());
    QCOMPARE(m_snapshotcount, 1);
    QCOMPARE(m_snapshottotal[0], total);
    QCOMPARE(QByteArray(datafile), isDirectory ? m_id->fallbackPath() : m_id->firstPath());
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
    if (isBlocked) {
        QVERIFY(QFile::remove(m_id->firstPath()));
        QVERIFY(QDir().mkdir(m_id->firstPath()));
    }
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

void statisticsFileTest::fullDisk()
{
    load("fileversion=2\n1:95:1:7.\n");
    const QByteArray old = fileContent(datafile);
    addRecord(96, 1, course(4094, 7));

    // A limit on the size of files fails where a full disk does.
    signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {16384, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const QByteArray used = datafile;
    saveStatistics(nullptr);
    setrlimit(RLIMIT_FSIZE, &limit);
    QCOMPARE(fileContent(used), old);
    QCOMPARE(QByteArray(datafile), used);
    saveStatistics(nullptr);
    QCOMPARE(fileContent(used).count('\n'), 3);
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
