#include "stats/findNearest.h"

#include "stats/estimate.h"
#include "stats/snapshots.h"
#include "tests/stats/situation.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <climits>
#include <cstdlib>

class findNearestTest : public QObject
{
    Q_OBJECT

private slots:
    void init() { startAnew(); }

    void distance_data();
    void distance();
    void choice();
    void hugeDeviations();
    void goesOnAsFromTheStart();
};

void findNearestTest::distance_data()
{
    QTest::addColumn<int>("total");
    QTest::addColumn<course>("record");
    QTest::addColumn<course>("pool");
    QTest::addColumn<double>("expected");
    QTest::addColumn<bool>("isCandidate");
    const auto row = [](const char *name, int total, const course &record, const course &pool,
                        double expected, bool isCandidate = true) {
        QTest::newRow(name) << total << record << pool << expected << isCandidate;
    };
    row("time in percent of the duration", 50, {0, 1000, 2000, 3000}, {1000, 2000, 3000, 4000}, 2.0);
    row("signature as it is", 50, {10, 1020}, {13, 1010}, 6.5);
    row("quotient not rounded", 7, {0, 0, 0}, {0, 1000, 2000}, 3.0 / 7 * 100.0 * (1.0 / 3));
    row("longer record", 100, {10, 20, 99, 99}, {14, 20}, 2.0);
    row("over the run, not over what is common", 100, course(9, 0), course(10, 9), 8.1);
    row("negative snapshots decode toward zero", 100, {-1500, -999}, {1500, 999}, (2.0 + 2998) / 2);
    row("23 of 25", 60, course(23, 0), course(25, 1), 23.0 / 25);
    row("22 of 25", 60, course(22, 0), course(25, 1), 22.0 / 25, false);
    row("8 of 9", 60, course(8, 0), course(9, 0), 0.0, false);
    row("none of 1", 60, {}, {0}, 0.0, false);
}

void findNearestTest::distance()
{
    QFETCH(int, total);
    QFETCH(course, record);
    QFETCH(course, pool);
    QFETCH(double, expected);
    QFETCH(bool, isCandidate);
    addRecord(total, 1, record);
    setPool(pool);

    double incernity = 42.0;
    int index = 7;
    QCOMPARE(findNearest(incernity, index), isCandidate ? total : -1);
    QCOMPARE(index, isCandidate ? 0 : -1);
    QCOMPARE(incernity, isCandidate ? expected : 42.0);
    // Written for the log, whether it is a candidate or not.
    QCOMPARE(m_snapshotfits[0], static_cast<int>(expected * 1000));
}

void findNearestTest::choice()
{
    addRecord(99, 0, {0, 1010}); // stands for no run
    addRecord(100, 1, {0, 1030});
    addRecord(101, 1, {0, 1012});
    addRecord(102, 1, {0, 1012});
    addRecord(103, 1, {0, 1008});
    setPool({0, 1010});
    double incernity = 0;
    int index = 0;
    QCOMPARE(findNearest(incernity, index), 101);
    QCOMPARE(index, 2);
    QCOMPARE(incernity, 1.0);
    QCOMPARE(m_snapshotfits[0], -7);
}

void findNearestTest::hugeDeviations()
{
    addRecord(1, 1, course(4094, INT_MIN));
    addRecord(1, 1, course(4094, INT_MAX));
    setPool(course(5000, 2147482999));
    QCOMPARE(m_nextSnap, 4094);
    double incernity = 0;
    int index = 0;
    QCOMPARE(findNearest(incernity, index), 1);
    QCOMPARE(index, 1);
    QCOMPARE(incernity, 100.0 + 352);
    QCOMPARE(m_snapshotfits[0], INT_MAX);
}

/// The comparison goes on from where it was, some of it many snapshots at a time; here it is made anew,
/// snapshot by snapshot, while runs grow and records change.
void findNearestTest::goesOnAsFromTheStart()
{
    QRandomGenerator random(63);
    const auto randomCourse = [&](int longest) {
        course snapshots(random.bounded(1u, unsigned(longest)));
        for (int &snapshot : snapshots)
            snapshot = random.bounded(50) ? random.bounded(100'000) : -random.bounded(100'000);
        return snapshots;
    };
    for (int record = 0; record < 5; ++record)
        addRecord(100, 1, randomCourse(600));
    for (int step = 0; step < 1000; ++step) {
        if (step % 50 == 0)
            setPool(randomCourse(100));
        if (step % 20 == 0)
            setRecordData(random.bounded(5), randomCourse(600));
        for (int added = random.bounded(100); added > 0; --added) {
            m_currentElapsed = random.bounded(-10, 100);
            addSnapshot(random.bounded(1000));
        }
        double incernity = 0;
        int index = 0;
        findNearest(incernity, index);
        for (int record = 0; record < 5; ++record) {
            const course snapshots = recordCourse(record);
            double deviation = 0;
            for (int i = 0; i < std::min(m_nextSnap, int(snapshots.size())); ++i) {
                const int snapshot = snapshots[std::size_t(i)];
                deviation += std::abs(snapshot / 1000 - m_snapshots[i] / 1000) +
                             std::abs(snapshot % 1000 - m_snapshots[i] % 1000);
            }
            QVERIFY(std::abs(m_snapshotfits[record] - deviation / m_nextSnap * 1000) <= 1);
        }
    }
}

QTEST_APPLESS_MAIN(findNearestTest)
#include "findNearestTest.moc"
