#include "stats/findNearest.h"

#include "stats/runTable.h"
#include "stats/snapshots.h"
#include "stats/toInt.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace
{

/// How far a record has been compared with the pool. All sums are integers, so that going on with them
/// gives the very same distance as starting over.
struct comparison {
    unsigned pool = 0;
    unsigned record = 0;
    int compared = 0;
    std::int64_t timeSum = 0;
    std::int64_t signatureSum = 0;
};

comparison m_comparisons[maxRecords];

void compareUpTo(comparison &sums, const int *record, int end)
{
    for (; sums.compared < end; ++sums.compared) {
        const int theirs = record[sums.compared];
        const int ours = m_snapshots[sums.compared];
        sums.timeSum += std::abs(theirs / snapshotScale - ours / snapshotScale);
        sums.signatureSum += std::abs(theirs % snapshotScale - ours % snapshotScale);
    }
}

double distanceOf(int record)
{
    comparison &sums = m_comparisons[record];
    if (sums.pool != m_poolRevision || sums.record != m_snapshotrevision[record])
        sums = {m_poolRevision, m_snapshotrevision[record]};
    compareUpTo(sums, m_snapshotdata[record].get(), std::min(m_nextSnap, m_snapshottlen[record]));

    const double timePercent = static_cast<double>(sums.timeSum) / m_snapshottotal[record] * 100.0;
    return (timePercent + static_cast<double>(sums.signatureSum)) * (1.0 / m_nextSnap);
}

} // namespace

int findNearest(double &incernity, int &index)
{
    double best = 1e38;
    int nearest = -1;
    for (int record = 0; record < m_snapshotcount; ++record) {
        if (m_snapshotfound[record] == 0)
            continue;
        const double distance = distanceOf(record);
        m_snapshotfits[record] = toInt(distance * 1000);
        if (m_snapshottlen[record] >= m_nextSnap - m_nextSnap / 10 && distance < best) {
            best = distance;
            nearest = record;
        }
    }
    index = nearest;
    if (nearest < 0)
        return -1;
    incernity = best;
    return m_snapshottotal[nearest];
}
