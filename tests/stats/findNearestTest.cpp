#include "stats/findNearest.h"

#include "stats/estimate.h"
#include "stats/snapshots.h"
#include "tests/stats/situation.h"

#include <QTest>

#include <climits>

class findNearestTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { startAnew(); }

    void distance_data();
    void distance();
    void candidates_data();
    void candidates();
    void firstOfEquals();
    void recordsWithoutFoundCount();
    void hugeDeviations();
    void growingRun();
    void changedRecord();
};

namespace
{

course steps(int count)
{
    course result;
    for (int i = 0; i < count; ++i)
        result.push_back(i * 1000 + i);
    return result;
}

} // namespace

void findNearestTest::distance_data()
{
    QTest::addColumn<int>("total");
    QTest::addColumn<course>("record");
    QTest::addColumn<course>("pool");
    QTest::addColumn<double>("expected");
    QTest::addColumn<int>("fits");

    QTest::newRow("same course") << 10 << course{0, 1010, 2020} << course{0, 1010, 2020} << 0.0 << 0;
    QTest::newRow("time in percent of the duration")
        << 50 << course{0, 1000, 2000, 3000} << course{1000, 2000, 3000, 4000} << 2.0 << 2000;
    QTest::newRow("signature as it is") << 50 << course{10, 1020} << course{13, 1010} << 6.5 << 6500;
    QTest::newRow("both") << 100 << course{5010, 7020} << course{4012, 9020} << 2.5 << 2500;
    QTest::newRow("quotient not rounded")
        << 7 << course{0, 0, 0} << course{0, 1000, 2000} << 3.0 / 7 * 100.0 * (1.0 / 3) << 14285;
    QTest::newRow("longer record") << 100 << course{10, 20, 99, 99} << course{14, 20} << 2.0 << 2000;
    QTest::newRow("over the run, not over what is common")
        << 100 << course(9, 0) << course(10, 9) << 8.1 << 8100;
    QTest::newRow("negative snapshots decode toward zero")
        << 100 << course{-1500, -999} << course{1500, 999} << (2.0 + 2998) / 2 << 1500000;
    QTest::newRow("many negative snapshots")
        << 100 << course(1000, -1500) << course(1000, 1500) << 1002.0 << 1002000;
}

void findNearestTest::distance()
{
    QFETCH(int, total);
    QFETCH(course, record);
    QFETCH(course, pool);
    QFETCH(double, expected);
    QFETCH(int, fits);
    addRecord(total, 1, record);
    setPool(pool);

    double incernity = -1;
    int index = 7;
    QCOMPARE(findNearest(incernity, index), total);
    QCOMPARE(index, 0);
    QCOMPARE(incernity, expected);
    QCOMPARE(m_snapshotfits[0], fits);
}

void findNearestTest::candidates_data()
{
    QTest::addColumn<int>("recorded");
    QTest::addColumn<int>("taken");
    QTest::addColumn<bool>("isCandidate");

    QTest::newRow("23 of 25") << 23 << 25 << true;
    QTest::newRow("22 of 25") << 22 << 25 << false;
    QTest::newRow("9 of 9") << 9 << 9 << true;
    QTest::newRow("8 of 9") << 8 << 9 << false;
    QTest::newRow("9 of 10") << 9 << 10 << true;
    QTest::newRow("8 of 10") << 8 << 10 << false;
    QTest::newRow("none of 1") << 0 << 1 << false;
    QTest::newRow("4094 of 1") << 4094 << 1 << true;
}

void findNearestTest::candidates()
{
    QFETCH(int, recorded);
    QFETCH(int, taken);
    QFETCH(bool, isCandidate);
    addRecord(60, 1, steps(recorded));
    setPool(steps(taken));

    double incernity = 42.0;
    int index = 7;
    QCOMPARE(findNearest(incernity, index), isCandidate ? 60 : -1);
    QCOMPARE(index, isCandidate ? 0 : -1);
    QCOMPARE(incernity, isCandidate ? 0.0 : 42.0);
    // Written for the log, whether it is a candidate or not.
    QCOMPARE(m_snapshotfits[0], 0);
}

void findNearestTest::firstOfEquals()
{
    addRecord(100, 1, {0, 1030});
    addRecord(101, 1, {0, 1012});
    addRecord(102, 1, {0, 1012});
    addRecord(103, 1, {0, 1008});
    setPool({0, 1010});
    double incernity = 0;
    int index = 0;
    QCOMPARE(findNearest(incernity, index), 101);
    QCOMPARE(index, 1);
    QCOMPARE(incernity, 1.0);
}

void findNearestTest::recordsWithoutFoundCount()
{
    addRecord(100, 0, {0, 1010});
    addRecord(200, -2, {0, 1012});
    setPool({0, 1010});
    double incernity = 0;
    int index = 0;
    QCOMPARE(findNearest(incernity, index), 200);
    QCOMPARE(index, 1);
    QCOMPARE(m_snapshotfits[0], -7);
}

void findNearestTest::hugeDeviations()
{
    addRecord(1, 1, course(4094, INT_MIN));
    addRecord(1, 1, course(4094, INT_MAX));
    setPool(course(4094, 2147482999));
    double incernity = 0;
    int index = 0;
    QCOMPARE(findNearest(incernity, index), 1);
    QCOMPARE(index, 1);
    QCOMPARE(incernity, 100.0 + 352);
    QCOMPARE(m_snapshotfits[0], INT_MAX);
}

void findNearestTest::growingRun()
{
    addRecord(100, 1, steps(4094));
    course run = steps(4094);
    for (int &snapshot : run)
        snapshot += 2007;

    double second = 0;
    double incernity = 0;
    int index = 0;
    clearSnapshots();
    for (const int snapshot : run) {
        m_currentElapsed = snapshot / 1000;
        addSnapshot(snapshot % 1000);
        QCOMPARE(findNearest(incernity, index), 100);
        second = m_nextSnap == 2 ? incernity : second;
    }
    QCOMPARE(second, 9.0);

    const double grown = incernity;
    setPool(run);
    QCOMPARE(findNearest(incernity, index), 100);
    QVERIFY(incernity == grown);

    // The pool is full now.
    addSnapshot(1);
    QCOMPARE(m_nextSnap, 4094);
}

void findNearestTest::changedRecord()
{
    const int record = addRecord(100, 1, {0, 1000, 2000});
    setPool({0, 1000, 2000});
    double incernity = 0;
    int index = 0;
    findNearest(incernity, index);
    QCOMPARE(incernity, 0.0);

    setRecordData(record, course{3, 1003, 2003});
    findNearest(incernity, index);
    QCOMPARE(incernity, 3.0);

    // A new run of the same length.
    setPool({5, 1005, 2005});
    findNearest(incernity, index);
    QCOMPARE(incernity, 2.0);
}

QTEST_APPLESS_MAIN(findNearestTest)
#include "findNearestTest.moc"
