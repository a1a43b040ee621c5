#include "stats/recordRun.h"

#include "stats/snapshots.h"
#include "stats/statisticsFile.h"
#include "tests/stats/situation.h"

#include <QTest>

#include <algorithm>
#include <climits>
#include <memory>

class recordRunTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<ownIdentifier> m_identifier;

private slots:
    void init();
    void cleanup() { m_identifier.reset(); }

    void firstRun();
    void merging();
    void sumsBeyondAnInt();
    void fullTable();
};

void recordRunTest::init()
{
    m_identifier = std::make_unique<ownIdentifier>();
    startAnew();
    loadStatistics(m_identifier->name());
}

void recordRunTest::firstRun()
{
    const daemonLog log;
    setPool({0, 1010, 2020});
    recordRun(47);
    QCOMPARE(m_snapshotcount, 1);
    QVERIFY(m_snapshottime[0].secsTo(QDateTime::currentDateTime()) < 60);
    QVERIFY(fileContent(datafile).endsWith(":00000047:00000001:00000000.00001010.00002020.\n"));
    QVERIFY(
        hasLines(log, {"   ++ new collected data: result=0047", "appending data with index result=0000:\n",
                       "---- saving intermediate data with entry count result=0001",
                       "---- total statistics count result=0001"}));
}

void recordRunTest::merging()
{
    // Over four snapshots, a distance of 5.0 and of 5.25.
    for (const int signatureSum : {20, 21}) {
        const bool isMerged = signatureSum == 20;
        startAnew();
        addRecord(1200, 4, {700, 700, 700, 700});
        addRecord(90, 1, {0, 1000, 2000, 3000, 4000});
        const course run = {signatureSum, 1000, 2000, 3000};
        const daemonLog log;
        setPool(run);
        recordRun(101);

        QCOMPARE(m_snapshotcount, isMerged ? 2 : 3);
        const int record = isMerged ? 1 : 2;
        QCOMPARE(m_snapshottotal[record], isMerged ? 95 : 101);
        QCOMPARE(m_snapshotfound[record], isMerged ? 2 : 1);
        QCOMPARE(recordCourse(record), run);
        QVERIFY(m_snapshottime[record].toSecsSinceEpoch() > 1000);
        QCOMPARE(m_snapshottime[0].toSecsSinceEpoch(), 1000);
        if (isMerged)
            QVERIFY(hasLines(log, {"replacing data with index result=0001:0695125.0005000.\n"}));
    }
}

void recordRunTest::sumsBeyondAnInt()
{
    addRecord(INT_MAX, INT_MAX, {0, 0});
    setPool({0, 0});
    recordRun(INT_MAX);
    QCOMPARE(m_snapshottotal[0], INT_MAX);
    QCOMPARE(m_snapshotfound[0], INT_MAX);
}

void recordRunTest::fullTable()
{
    for (int record = 0; record < 1024; ++record)
        addRecord(50, 2, {0, record % 1000}, record);
    for (const auto &[record, time] : {std::pair(300, 9000), std::pair(700, 8000), std::pair(900, 8000)}) {
        m_snapshotfound[record] = 1;
        m_snapshottime[record] = QDateTime::fromSecsSinceEpoch(time);
    }
    setPool({0, 3});
    recordRun(60);
    QCOMPARE(m_snapshottotal[3], 55);
    // Another one takes the place of the oldest of the least found.
    setPool({0, 1000000});
    recordRun(60);
    QCOMPARE(m_snapshottotal[700], 60);
    QCOMPARE(m_snapshotfound[700], 1);
    QCOMPARE(m_snapshotcount, 1024);
    QCOMPARE(std::count(m_snapshottotal, m_snapshottotal + 1024, 50), 1022);
}

QTEST_APPLESS_MAIN(recordRunTest)
#include "recordRunTest.moc"
