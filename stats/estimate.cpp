#include "stats/estimate.h"

#include "log/dump.h"
#include "stats/adaptiveEstimate.h"
#include "stats/findNearest.h"
#include "stats/newestCourses.h"
#include "stats/runTable.h"
#include "stats/snapshots.h"
#include "stats/toInt.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>

int m_currentElapsed = -1;
int m_currentTotal = -1;
int m_currentFound = -1;
estimateMode m_estimateMode = estimateMode::exact;

namespace
{

/// The estimate in force, if any, is an adaptive one.
bool m_isAdaptive = false;

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

estimateStep advanceExact(int elapsed, int dialogIdentity)
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

/// Follows no record, so none is left or dropped.
estimateStep advanceAdaptive(int elapsed, int percent)
{
    const std::span run(m_snapshots, static_cast<std::size_t>(m_nextSnap));
    const auto remaining = adaptiveRemaining(newestCourses(), run, std::max(elapsed, 0), percent);
    const int total = remaining ? toInt(elapsed + std::floor(*remaining + 0.5)) : -1;
    if (total <= 0)
        return estimateStep::nothing;
    m_currentTotal = total;
    return estimateStep::display;
}

} // namespace

void startEstimate()
{
    m_currentElapsed = 0;
    clearSnapshots();
    if (m_estimateMode == estimateMode::adaptive)
        newestCourses(); // not at the first tick
}

void resetEstimate()
{
    m_currentTotal = -1;
    m_currentFound = -1;
}

estimateStep advanceEstimate(int elapsed, int percent, int dialogIdentity)
{
    m_currentElapsed = elapsed;
    const bool isAdaptive = m_estimateMode == estimateMode::adaptive;
    const bool wasShown = m_currentTotal != -1;
    const bool isNewKind = std::exchange(m_isAdaptive, isAdaptive) != isAdaptive;
    if (isAdaptive || isNewKind)
        resetEstimate();

    const estimateStep step =
        isAdaptive ? advanceAdaptive(elapsed, percent) : advanceExact(elapsed, dialogIdentity);
    return wasShown && m_currentTotal == -1 && step == estimateStep::nothing ? estimateStep::vanished : step;
}

estimateStep holdEstimate(int elapsed)
{
    m_currentElapsed = elapsed;
    return estimateStep::display;
}
