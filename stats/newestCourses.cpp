#include "stats/newestCourses.h"

#include "stats/runTable.h"

#include <algorithm>
#include <utility>

namespace
{

constexpr std::size_t mostCourses = 64;

std::vector<learnedCourse> m_courses;
unsigned m_revision = 0;
int m_count = 0;

/// Of equal time stamps the later record is the newer one.
std::vector<int> newestRecords()
{
    std::vector<std::pair<qint64, int>> records;
    for (int record = 0; record < m_snapshotcount; ++record) {
        if (m_snapshotfound[record] > 0)
            records.emplace_back(m_snapshottime[record].toSecsSinceEpoch(), record);
    }
    const std::size_t count = std::min(records.size(), mostCourses);
    std::ranges::partial_sort(records, records.begin() + static_cast<std::ptrdiff_t>(count), std::greater());
    std::vector<int> newest;
    for (const auto &[time, record] : std::span(records).first(count))
        newest.push_back(record);
    return newest;
}

} // namespace

std::span<const learnedCourse> newestCourses()
{
    if (m_revision == m_tableRevision && m_count == m_snapshotcount)
        return m_courses;
    m_revision = m_tableRevision;
    m_count = m_snapshotcount;
    m_courses.clear();
    for (const int record : newestRecords()) {
        const std::span snapshots(m_snapshotdata[record].get(),
                                  static_cast<std::size_t>(m_snapshottlen[record]));
        m_courses.push_back({m_snapshottotal[record], courseSteps(snapshots)});
    }
    return m_courses;
}
