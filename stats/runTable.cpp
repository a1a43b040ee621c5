#include "stats/runTable.h"

#include <algorithm>

QDateTime m_snapshottime[maxRecords];
int m_snapshottotal[maxRecords];
int m_snapshotfound[maxRecords];
int m_snapshottlen[maxRecords];
std::unique_ptr<int[]> m_snapshotdata[maxRecords];
int m_snapshotfits[maxRecords];
unsigned m_snapshotrevision[maxRecords];
int m_snapshotcount = 0;
unsigned m_tableRevision = 0;

void setRecordData(int record, std::span<const int> snapshots)
{
    m_snapshotdata[record] = std::make_unique_for_overwrite<int[]>(snapshots.size());
    std::ranges::copy(snapshots, m_snapshotdata[record].get());
    m_snapshottlen[record] = static_cast<int>(snapshots.size());
    ++m_snapshotrevision[record];
    ++m_tableRevision;
}

void lowerFoundCount(int record)
{
    if (m_snapshotfound[record] > 0)
        --m_snapshotfound[record];
    ++m_tableRevision;
}
