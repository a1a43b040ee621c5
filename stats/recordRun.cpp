#include "stats/recordRun.h"

#include "log/dump.h"
#include "stats/findNearest.h"
#include "stats/runTable.h"
#include "stats/snapshots.h"
#include "stats/statisticsFile.h"
#include "stats/toInt.h"

#include <cstdint>
#include <span>

namespace
{

void storeCourse(int record)
{
    m_snapshottime[record] = QDateTime::currentDateTime();
    setRecordData(record, std::span(m_snapshots, static_cast<std::size_t>(m_nextSnap)));
}

void merge(int record, int seconds)
{
    dump("#replacing data with index", record, m_snapshotcount, m_snapshotfits);
    m_snapshotfound[record] = toInt(std::int64_t{m_snapshotfound[record]} + 1);
    m_snapshottotal[record] = toInt((std::int64_t{m_snapshottotal[record]} + seconds) / 2);
    storeCourse(record);
}

int leastUsedRecord()
{
    int least = 0;
    for (int record = 1; record < m_snapshotcount; ++record) {
        const int found = m_snapshotfound[record];
        if (found < m_snapshotfound[least] ||
            (found == m_snapshotfound[least] && m_snapshottime[record] < m_snapshottime[least]))
            least = record;
    }
    return least;
}

void append(int seconds)
{
    const bool full = m_snapshotcount == maxRecords;
    const int record = full ? leastUsedRecord() : m_snapshotcount;
    dump("#appending data with index", record, m_snapshotcount, m_snapshotfits);
    m_snapshotfound[record] = 1;
    m_snapshottotal[record] = seconds;
    storeCourse(record);
    if (!full)
        ++m_snapshotcount;
}

} // namespace

void recordRun(int seconds)
{
    dump("   ++ new collected data:", seconds);
    double incernity = 0.0;
    int index = 0;
    findNearest(incernity, index);
    if (index >= 0 && incernity <= followDistance)
        merge(index, seconds);
    else
        append(seconds);
    saveStatistics(nullptr);
}
