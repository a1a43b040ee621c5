#pragma once

#include "wire/recordLine.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

/// A snapshot is a moment of a run in one int: elapsed seconds × 1000 + the progress signature, which lies
/// between -999 and 999 and has the sign of the elapsed time wherever the daemon itself made it. Decoding
/// is the int division by 1000, truncated toward zero.
inline constexpr int snapshotScale = 1000;

/// `value` truncated toward zero, held at the ends of the range of an int. It is not a NaN.
template <typename number> constexpr int toInt(number value)
{
    return static_cast<int>(
        std::clamp<number>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

/// A moment at which a run came further. The way is the sum of the rises of its signature so far; for a
/// single bar in slot 0 that only grows it is the percent.
struct courseStep {
    int second = 0;
    int way = 0;
};

/// Goes along a course and finds its steps.
class courseWalk
{
public:
    /// Goes on to the next snapshot; tells whether it is a step, which is then the last one.
    bool take(int snapshot);
    /// The start while there was none.
    courseStep lastStep() const { return m_lastStep; }

private:
    courseStep m_lastStep;
    int m_signature = 0;
};

/// The course of a run, of which there is one at a time; between runs that of the last one.
class progressRun
{
public:
    /// Another run starts: no time has passed, and it has no snapshots. Its amount may have been told before.
    void start();
    /// Whole seconds from the start to the last tick; -1 before the first run. A clock that was set during
    /// the run can make them anything: they are held at the most that a snapshot has room for.
    void setElapsed(std::int64_t seconds)
    {
        constexpr std::int64_t most = std::numeric_limits<int>::max() / snapshotScale - 1;
        m_elapsed = static_cast<int>(std::clamp(seconds, -most, most));
    }
    /// How much there is to do, in whatever unit the job counts; 0 when that is not known.
    void setAmount(std::int64_t amount) { m_amount = amount; }
    /// Adds this moment with the signature `actualProgress` modulo 1000; nothing beyond
    /// `wire::mostSnapshots`.
    void addSnapshot(int actualProgress)
    {
        if (m_snapshots.size() < wire::mostSnapshots)
            append(actualProgress);
    }

    int elapsed() const { return m_elapsed; }
    std::int64_t amount() const { return m_amount; }
    std::span<const int> snapshots() const { return m_snapshots; }
    /// Their elapsed seconds, decoded once for the comparison with each record.
    std::span<const int> seconds() const { return m_seconds; }
    courseStep lastStep() const { return m_walk.lastStep(); }
    /// Another one for each run; never 0.
    unsigned number() const { return m_number; }

private:
    void append(int actualProgress);

    int m_elapsed = -1;
    std::int64_t m_amount = 0;
    std::vector<int> m_snapshots;
    std::vector<int> m_seconds;
    courseWalk m_walk;
    unsigned m_number = 1;
};
