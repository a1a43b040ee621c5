#include "stats/adaptiveEstimate.h"

#include "stats/snapshots.h"

#include <algorithm>
#include <cmath>

namespace
{

/// Two moments of an earlier run: when it had come as far as this one, and until when it came no further.
struct passage {
    double reached;
    double left;
};

passage passageOf(const learnedCourse &record, int way)
{
    const auto beyond = std::ranges::upper_bound(record.steps, way, {}, &courseStep::way);
    const courseStep before = beyond == record.steps.begin() ? courseStep{0, 0} : *std::prev(beyond);
    if (beyond == record.steps.end()) {
        const double last = before.second;
        return {last, std::max(last, double(record.total))};
    }
    const double share = double(way - before.way) / (beyond->way - before.way);
    return {before.second + share * (double(beyond->second) - before.second), double(beyond->second)};
}

bool cameAsFar(const learnedCourse &record, int way)
{
    return (record.steps.empty() ? 0 : record.steps.back().way) >= way;
}

} // namespace

std::vector<courseStep> courseSteps(std::span<const int> snapshots)
{
    std::vector<courseStep> steps;
    int before = 0;
    int way = 0;
    for (const int snapshot : snapshots) {
        if (snapshot < 0)
            continue;
        const int signature = snapshot % snapshotScale;
        const int rise = (signature - before + snapshotScale) % snapshotScale;
        before = signature;
        if (rise > 0 && rise < snapshotScale / 2)
            steps.push_back({snapshot / snapshotScale, way += rise});
    }
    return steps;
}

std::optional<double> adaptiveRemaining(std::span<const learnedCourse> records,
                                        std::span<const int> snapshots, int elapsed, int percent)
{
    const auto steps = courseSteps(snapshots);
    const courseStep reached = steps.empty() ? courseStep{0, 0} : steps.back();
    double weights = 0;
    double sum = 0;
    for (const learnedCourse &record : records) {
        if (!cameAsFar(record, reached.way))
            continue;
        const passage passed = passageOf(record, reached.way);
        const double now = std::min(passed.reached + std::max(0, elapsed - reached.second), passed.left);
        const double known = std::min(1.0, now / (0.3 * record.total));
        const double pace = known * std::log(std::max(elapsed, 1) / std::max(now, 1.0));
        const double weight = 1 / (1 + (pace / 0.2) * (pace / 0.2));
        sum += weight * (std::log(std::max(record.total - now, 0.5)) + 0.5 * pace);
        weights += weight;
    }
    if (weights > 0)
        return std::exp(sum / weights);
    if (percent <= 0)
        return std::nullopt;
    return double(elapsed) * (100 - percent) / percent;
}
