#include "stats/estimate.h"

#include "log/dump.h"

#include <cmath>
#include <utility>

namespace
{

/// A run farther from its nearest record than this is none of the recorded ones.
constexpr double dropDistance = 10.0;
constexpr std::size_t leastSnapshots = 3;

int secondsAndIndex(int seconds, int index)
{
    return toInt(std::int64_t{seconds} * 1000 + index);
}

// "incernity" is what the log calls the distance.
void logDistance(const char *what, double distance, const runTable &table)
{
    dump(what, toInt(distance * 1000), table.count(), table.fits().data());
}

} // namespace

void runEstimate::reset()
{
    m_total = -1;
    m_found = -1;
    m_isOverdue = false;
}

void runEstimate::start(estimateMode mode, const runTable &table)
{
    m_calm = {};
    if (mode == estimateMode::adaptive)
        m_adaptive.prepare(table);
}

remainingTime runEstimate::remaining(int elapsed)
{
    // The clock may have been set back during the run.
    const int seconds = toInt(std::int64_t{m_total} - elapsed);
    return {seconds, m_calm.shown(seconds, elapsed), m_isOverdue};
}

void runEstimate::leaveFollowedRecord(runTable &table) const
{
    if (m_found < 0)
        return;
    dump("dropping data set with index ", m_found);
    table.lowerFoundCount(m_found);
}

void runEstimate::follow(runTable &table, const nearestRecord &nearest, int dialogIdentity)
{
    dump("---- active dialog is", dialogIdentity);
    dump("found remaining duration/index", secondsAndIndex(nearest.total, nearest.index));
    logDistance("found incernity in u", nearest.distance, table);
    leaveFollowedRecord(table);
    m_total = nearest.total;
    m_found = nearest.index;
}

void runEstimate::drop(runTable &table, const nearestRecord &nearest, int elapsed)
{
    dump("   ++ resetting current duration/index", secondsAndIndex(elapsed, nearest.index));
    logDistance("   ++ resetting incernity in u", nearest.distance, table);
    leaveFollowedRecord(table);
    reset();
}

estimateStep runEstimate::advanceExact(runTable &table, const progressRun &run, int dialogIdentity)
{
    if (run.snapshots().size() < leastSnapshots)
        return estimateStep::nothing;

    const nearestRecord nearest = findNearest(table, run);
    if (nearest.index >= 0 && nearest.distance <= followDistance) {
        if (nearest.total != m_total)
            follow(table, nearest, dialogIdentity);
        return estimateStep::display;
    }
    if (m_total == -1)
        return estimateStep::nothing;
    if (nearest.distance > dropDistance) {
        drop(table, nearest, run.elapsed());
        return estimateStep::dropped;
    }
    return estimateStep::display;
}

/// Follows no record, so none is left or dropped.
estimateStep runEstimate::advanceAdaptive(const runTable &table, const progressRun &run, int percent)
{
    const auto remaining = m_adaptive.remaining(table, run, percent);
    const int total = remaining ? toInt(run.elapsed() + std::floor(remaining->seconds + 0.5)) : -1;
    if (total <= 0)
        return estimateStep::nothing;
    m_total = total;
    m_isOverdue = remaining->isOverdue;
    return estimateStep::display;
}

estimateStep runEstimate::advance(estimateMode mode, runTable &table, const progressRun &run, int percent,
                                  int dialogIdentity)
{
    const bool wasShown = m_total != -1;
    const bool isNewKind = std::exchange(m_mode, mode) != mode;
    if (mode == estimateMode::adaptive || isNewKind)
        reset();

    const estimateStep step = mode == estimateMode::adaptive ? advanceAdaptive(table, run, percent)
                                                             : advanceExact(table, run, dialogIdentity);
    return wasShown && m_total == -1 && step == estimateStep::nothing ? estimateStep::vanished : step;
}

QString remainingText(int remainingSeconds)
{
    if (remainingSeconds > 300)
        return QString::asprintf("(%lld min remaining)", (remainingSeconds + 29LL) / 60);
    if (remainingSeconds > 59)
        return QString::asprintf("(%d:%02d remaining)", remainingSeconds / 60, remainingSeconds % 60);
    if (remainingSeconds < 0)
        return {};
    return QString::asprintf("(%d s remaining)", remainingSeconds);
}
