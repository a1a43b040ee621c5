#pragma once

#include <optional>
#include <span>
#include <vector>

/// The adaptive estimate: each earlier run says how long it still took from where this one is now, and half
/// of this run's difference in pace is taken to go on.

/// A moment at which a run came further. The way is the sum of the rises of its signature so far; for a
/// single bar in slot 0 that only grows it is the percent.
struct courseStep {
    int second;
    int way;
};

/// An earlier run.
struct learnedCourse {
    /// Duration in seconds, at least 1.
    int total;
    /// Their ways grow.
    std::vector<courseStep> steps;
};

/// The steps of a course that is given as snapshots.
std::vector<courseStep> courseSteps(std::span<const int> snapshots);

/// The seconds that remain of a run with the course `snapshots`, now `elapsed` (not negative) seconds after
/// its start and at `percent` (0 to 100) on average. Records that never came as far take no part; without any
/// other the run's own average speed counts, and while `percent` is 0 nothing is known.
std::optional<double> adaptiveRemaining(std::span<const learnedCourse> records,
                                        std::span<const int> snapshots, int elapsed, int percent);
