// Drives the estimate with random runs, side by side with the rules written down plainly.

#include "stats/estimate.h"
#include "stats/findNearest.h"
#include "stats/recordRun.h"
#include "stats/snapshots.h"
#include "stats/statisticsFile.h"
#include "tests/stats/situation.h"

#include <QRandomGenerator>
#include <QTest>

#include <cstdlib>
#include <map>

namespace
{

/// The rules, without any thought of speed.
struct plainRules {
    struct record {
        int total, found;
        course snapshots;
        int fits;
    };
    std::vector<record> records;
    course pool;
    int currentTotal = -1;
    int currentFound = -1;
    /// How often each branch was taken.
    std::map<QByteArray, int> taken;

    record &at(int index) { return records[static_cast<std::size_t>(index)]; }

    int findNearest(double &incernity, int &index)
    {
        const int n = static_cast<int>(pool.size());
        double best = 1e38;
        int nearest = -1;
        for (int k = 0; k < static_cast<int>(records.size()); ++k) {
            if (at(k).found == 0)
                continue;
            const int length = static_cast<int>(at(k).snapshots.size());
            long long tsum = 0, psum = 0;
            for (std::size_t j = 0; j < std::min(pool.size(), at(k).snapshots.size()); ++j) {
                tsum += std::abs(at(k).snapshots[j] / 1000 - pool[j] / 1000);
                psum += std::abs(at(k).snapshots[j] % 1000 - pool[j] % 1000);
            }
            const double distance =
                (double(tsum) / double(at(k).total) * 100.0 + double(psum)) * (1.0 / double(n));
            at(k).fits = static_cast<int>(distance * 1000);
            if (length >= n - n / 10 && distance < best) {
                best = distance;
                nearest = k;
            }
        }
        index = nearest;
        if (nearest == -1)
            return -1;
        incernity = best;
        return at(nearest).total;
    }

    void leave()
    {
        if (currentFound >= 0 && at(currentFound).found > 0)
            at(currentFound).found--;
    }

    estimateStep tick()
    {
        if (pool.size() < 3)
            return estimateStep::nothing;
        double incernity = 0.0;
        int index = 0;
        const int total = findNearest(incernity, index);
        if (index >= 0 && incernity <= 5.0) {
            if (total != currentTotal) {
                ++taken[currentTotal == -1 ? "follow" : "change"];
                leave();
                currentTotal = total;
                currentFound = index;
            }
            return estimateStep::display;
        }
        if (currentTotal == -1)
            return estimateStep::nothing;
        if (incernity > 10.0) {
            ++taken["drop"];
            leave();
            currentTotal = currentFound = -1;
            return estimateStep::dropped;
        }
        ++taken[index < 0 ? "hold without candidate" : "hold"];
        return estimateStep::display;
    }

    void end(int seconds)
    {
        double incernity = 0.0;
        int index = 0;
        findNearest(incernity, index);
        if (index >= 0 && incernity <= 5.0) {
            ++taken["merge"];
            at(index).found++;
            at(index).total = (at(index).total + seconds) / 2;
            at(index).snapshots = pool;
        } else {
            ++taken["append"];
            records.push_back({seconds, 1, pool, 0});
        }
    }
};

} // namespace

class againstRulesTest : public QObject
{
    Q_OBJECT

    void compareState();
    void oneRun();

    QRandomGenerator m_random{63};
    plainRules m_rules;

private slots:
    void randomRuns();
};

void againstRulesTest::compareState()
{
    QCOMPARE(m_currentTotal, m_rules.currentTotal);
    QCOMPARE(m_currentFound, m_rules.currentFound);
    QCOMPARE(course(m_snapshots, m_snapshots + m_nextSnap), m_rules.pool);
    QCOMPARE(m_snapshotcount, static_cast<int>(m_rules.records.size()));
    for (int k = 0; k < m_snapshotcount; ++k) {
        const plainRules::record &record = m_rules.at(k);
        QCOMPARE(m_snapshottotal[k], record.total);
        QCOMPARE(m_snapshotfound[k], record.found);
        QCOMPARE(recordCourse(k), record.snapshots);
        if (record.found != 0 && record.fits != 0)
            QCOMPARE(m_snapshotfits[k], record.fits);
    }
}

void againstRulesTest::oneRun()
{
    // Runs come in kinds that differ in pace and length; some turn into another kind on the way, and now and
    // then the clock is set.
    int kind = m_random.bounded(6);
    const int turn = m_random.bounded(3) ? 1000 : m_random.bounded(100);
    const int clockSet = m_random.bounded(10) ? 1000 : m_random.bounded(100);
    const int length = 30 + 10 * kind + m_random.bounded(-4, 4);
    // Longer than any record; never recorded.
    const bool isEndless = m_random.bounded(8) == 0;
    double elapsed = 0;

    startEstimate();
    clearSnapshots();
    m_rules.pool.clear();
    for (int step = 0; step < (isEndless ? 120 : length); ++step) {
        if (step == turn)
            kind = m_random.bounded(6);
        if (step == clockSet)
            elapsed += m_random.bounded(-5000, 5000);
        elapsed += 0.2 + 0.15 * kind + (m_random.bounded(8) ? 0 : 1);
        const int progress = 100 * step / length + m_random.bounded(3) + (kind == 5 ? 1500 : 0);
        m_currentElapsed = static_cast<int>(elapsed);
        addSnapshot(progress);
        m_rules.pool.push_back(progress % 1000 + m_currentElapsed * 1000);
        if (m_random.bounded(3) == 0) {
            QCOMPARE(advanceEstimate(m_currentElapsed, 1), m_rules.tick());
            compareState();
            if (QTest::currentTestFailed())
                return;
        }
    }

    resetEstimate();
    m_rules.currentTotal = m_rules.currentFound = -1;
    if (isEndless || m_random.bounded(10) == 0 || elapsed < 1)
        return;
    recordRun(static_cast<int>(elapsed));
    m_rules.end(static_cast<int>(elapsed));
    compareState();
}

void againstRulesTest::randomRuns()
{
    const ownIdentifier identifier;
    startAnew();
    loadStatistics(identifier.name());
    for (int run = 0; run < 400 && m_snapshotcount < 1024; ++run) {
        oneRun();
        QVERIFY2(!QTest::currentTestFailed(), QByteArray::number(run));
    }
    for (const char *branch :
         {"follow", "change", "hold", "hold without candidate", "drop", "merge", "append"})
        QVERIFY2(m_rules.taken[branch] >= 10,
                 QByteArray(branch) + ' ' + QByteArray::number(m_rules.taken[branch]));
}

QTEST_APPLESS_MAIN(againstRulesTest)
#include "againstRulesTest.moc"
