#include "stats/snapshots.h"

#include "stats/estimate.h"

#include <algorithm>
#include <limits>

int m_snapshots[4096];
int m_nextSnap = 0;
unsigned m_poolRevision = 0;

void clearSnapshots()
{
    m_nextSnap = 0;
    ++m_poolRevision;
}

void addSnapshot(int actualProgress)
{
    if (m_nextSnap >= maxSnapshots)
        return;
    // A clock that was set during the run can make the elapsed time anything.
    constexpr int longest = std::numeric_limits<int>::max() / snapshotScale - 1;
    const int elapsed = std::clamp(m_currentElapsed, -longest, longest);
    m_snapshots[m_nextSnap++] = actualProgress % snapshotScale + elapsed * snapshotScale;
}
