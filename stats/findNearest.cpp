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
    alignas(64) int times[maxSnapshots];
    alignas(64) int signatures[maxSnapshots];
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

void compareSingly(comparison &sums, const int *record, int end)
{
    for (; sums.compared < end; ++sums.compared) {
        const int snapshot = record[sums.compared];
        sums.timeSum += std::abs(snapshot / snapshotScale - m_pool.times[sums.compared]);
        sums.signatureSum += std::abs(snapshot % snapshotScale - m_pool.signatures[sums.compared]);
    }
}

/// What a block of snapshots deviates by in all.
struct blockDeviation {
    std::uint32_t time = 0;
    std::uint32_t signature = 0;
    bool hasNegative = false;
};

constexpr int blockLength = 64;

/// The fixed length, the 32-bit sums (the times of a block deviate by less than 2^29) and the unsigned
/// division let compilers use vector instructions. A block with negative snapshots, which a clock set during
/// the run has left, is only recognised.
[[gnu::always_inline]] inline blockDeviation deviationOf(const int *snapshots, const int *times,
                                                         const int *signatures)
{
    blockDeviation sums;
    std::uint32_t allBits = 0;
    for (int i = 0; i < blockLength; ++i) {
        const auto snapshot = static_cast<std::uint32_t>(snapshots[i]);
        const std::uint32_t time = snapshot / snapshotScale;
        const std::uint32_t signature = snapshot - time * snapshotScale;
        allBits |= snapshot;
        sums.time += static_cast<std::uint32_t>(std::abs(static_cast<int>(time) - times[i]));
        sums.signature += static_cast<std::uint32_t>(std::abs(static_cast<int>(signature) - signatures[i]));
    }
    sums.hasNegative = static_cast<int>(allBits) < 0;
    return sums;
}

[[gnu::always_inline]] inline void compareBlocksInline(comparison &sums, const int *record, int end)
{
    while (end - sums.compared >= blockLength) {
        const int at = sums.compared;
        const blockDeviation block = deviationOf(record + at, m_pool.times + at, m_pool.signatures + at);
        if (block.hasNegative) {
            compareSingly(sums, record, at + blockLength);
            continue;
        }
        sums.timeSum += block.time;
        sums.signatureSum += block.signature;
        sums.compared += blockLength;
    }
}

void compareBlocks(comparison &sums, const int *record, int end)
{
    compareBlocksInline(sums, record, end);
}

#ifdef __x86_64__
/// The same for processors with wider vectors, which the build does not presume.
[[gnu::target("avx2")]] void compareBlocksWide(comparison &sums, const int *record, int end)
{
    compareBlocksInline(sums, record, end);
}

const auto compareBlocksHere = __builtin_cpu_supports("avx2") ? compareBlocksWide : compareBlocks;
#else
const auto compareBlocksHere = compareBlocks;
#endif

double distanceOf(int record)
{
    comparison &sums = m_comparisons[record];
    if (sums.poolRevision != m_poolRevision || sums.recordRevision != m_snapshotrevision[record])
        sums = {m_poolRevision, m_snapshotrevision[record]};
    const int *const snapshots = m_snapshotdata[record].get();
    const int end = std::min(m_nextSnap, m_snapshottlen[record]);
    compareBlocksHere(sums, snapshots, end);
    compareSingly(sums, snapshots, end);

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
