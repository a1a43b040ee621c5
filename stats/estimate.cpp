#include "stats/estimate.h"

#include "app/dump.h"
#include "stats/findNearest.h"
#include "stats/runTable.h"
#include "stats/snapshots.h"
#include "stats/toInt.h"

#include <cstdint>

int m_currentElapsed = -1;
int m_currentTotal = -1;
int m_currentFound = -1;

namespace
{

/// A run farther from its nearest record than this is none of the recorded ones.
constexpr double dropDistance = 10.0;
constexpr int leastSnapshots = 3;

int secondsAndIndex(int seconds, int index)
{
    return toInt(std::int64_t{seconds} * 1000 + index);
}

void leaveFollowedRecord()
{
    if (m_currentFound < 0)
        return;
    dump("dropping data set with index ", m_currentFound);
    lowerFoundCount(m_currentFound);
}

void follow(int total, int index, double incernity, int dialogIdentity)
{
    dump("---- active dialog is", dialogIdentity);
    dump("found remaining duration/index", secondsAndIndex(total, index));
    dump("found incernity in u", toInt(incernity * 1000), m_snapshotcount, m_snapshotfits);
    leaveFollowedRecord();
    m_currentTotal = total;
    m_currentFound = index;
}

void drop(int elapsed, int index, double incernity)
{
    dump("   ++ resetting current duration/index", secondsAndIndex(elapsed, index));
    dump("   ++ resetting incernity in u", toInt(incernity * 1000), m_snapshotcount, m_snapshotfits);
    leaveFollowedRecord();
    resetEstimate();
}

} // namespace

void startEstimate()
{
    m_currentElapsed = 0;
}

void resetEstimate()
{
    m_currentTotal = -1;
    m_currentFound = -1;
}

estimateStep advanceEstimate(int elapsed, int dialogIdentity)
{
    if (m_nextSnap < leastSnapshots)
        return estimateStep::nothing;

    double incernity = 0.0;
    int index = 0;
    const int total = findNearest(incernity, index);
    if (index >= 0 && incernity <= followDistance) {
        if (total != m_currentTotal)
            follow(total, index, incernity, dialogIdentity);
        return estimateStep::display;
    }
    if (m_currentTotal == -1)
        return estimateStep::nothing;
    if (incernity > dropDistance) {
        drop(elapsed, index, incernity);
        return estimateStep::dropped;
    }
    return estimateStep::display;
}
