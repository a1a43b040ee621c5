#pragma once

#include "stats/progressRun.h"
#include "stats/runTable.h"

#include <optional>
#include <vector>

/// An earlier run.
struct learnedCourse {
    /// Duration in seconds, at least 1.
    int total;
    /// 0 when it is not known.
    std::int64_t amount;
    /// Their ways grow.
    std::vector<courseStep> steps;
};

struct remainingEstimate {
    double seconds;
    /// The run has stood still, as none of the earlier ones did here, for longer than `seconds`, which do not
    /// get less meanwhile.
    bool isOverdue;
};

/// The adaptive estimate: each earlier run says how long it still took from where this one is now, stretched
/// to this one's amount of work, and half of this run's difference in pace is taken to go on.
class adaptiveEstimate
{
public:
    /// What remains of `run`, now `run.elapsed()` seconds after its start and at `percent` (0 to 100) on
    /// average. Records of runs that were given up or never came as far take no part; without any other the
    /// run's own average speed counts, and while `percent` is 0 nothing is known.
    std::optional<remainingEstimate> remaining(const runTable &table, const progressRun &run, int percent);
    /// Looks the records through now rather than when they are first asked.
    void prepare(const runTable &table);

private:
    /// Of the newest 64 records those that were not given up.
    std::vector<learnedCourse> m_courses;
    /// That of the table that they were taken from.
    unsigned m_revision = 0;
};
