#include "stats/findNearest.h"

#include "stats/runTable.h"
#include "stats/snapshots.h"
#include "stats/toInt.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace
{

/// The snapshot pool, decoded once for all records.
struct decodedPool {
    int times[maxSnapshots];
    int signatures[maxSnapshots];
    int count = 0;
    unsigned revision = 0;
};

/// How far a record has been compared with the pool. All sums are integers, so that going on with them
/// gives the very same distance as starting over.
struct comparison {
    unsigned poolRevision = 0;
    unsigned recordRevision = 0;
    int compared = 0;
    std::int64_t timeSum = 0;
    std::int64_t signatureSum = 0;
};

decodedPool m_pool;
comparison m_comparisons[maxRecords];

void decodePool()
{
    if (m_pool.revision != m_poolRevision)
        m_pool.count = 0;
    m_pool.revision = m_poolRevision;
    for (; m_pool.count < m_nextSnap; ++m_pool.count) {
        m_pool.times[m_pool.count] = m_snapshots[m_pool.count] / snapshotScale;
        m_pool.signatures[m_pool.count] = m_snapshots[m_pool.count] % snapshotScale;
    }
}

/// Kept free of all that would keep compilers from using vector instructions.
void compare(comparison &sums, const int *record, int end)
{
    std::int64_t timeSum = 0;
    std::int64_t signatureSum = 0;
    for (int i = sums.compared; i < end; ++i) {
        const int time = record[i] / snapshotScale;
        timeSum += std::abs(time - m_pool.times[i]);
        signatureSum += std::abs(record[i] - time * snapshotScale - m_pool.signatures[i]);
    }
    sums.compared = end;
    sums.timeSum += timeSum;
    sums.signatureSum += signatureSum;
}

double distanceOf(int record)
{
    comparison &sums = m_comparisons[record];
    if (sums.poolRevision != m_poolRevision || sums.recordRevision != m_snapshotrevision[record])
        sums = {m_poolRevision, m_snapshotrevision[record]};
    compare(sums, m_snapshotdata[record].get(), std::min(m_nextSnap, m_snapshottlen[record]));

    const double timePercent = static_cast<double>(sums.timeSum) / m_snapshottotal[record] * 100.0;
    return (timePercent + static_cast<double>(sums.signatureSum)) * (1.0 / m_nextSnap);
}

} // namespace

int findNearest(double &incernity, int &index)
{
    decodePool();
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
