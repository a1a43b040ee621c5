#include "stats/adaptiveEstimate.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

namespace
{

/// Their times and indices. Of equal time stamps the later record is the newer one.
std::vector<std::pair<unsigned, int>> newestRecords(const runTable &table)
{
    constexpr std::size_t most = 64;
    std::vector<std::pair<unsigned, int>> records;
    for (int index = 0; index < table.count(); ++index) {
        if (table[index].found > 0)
            records.emplace_back(table[index].time, index);
    }
    std::ranges::sort(records, std::greater());
    records.resize(std::min(records.size(), most));
    return records;
}

std::vector<courseStep> courseSteps(const std::vector<int> &snapshots)
{
    std::vector<courseStep> steps;
    courseWalk walk;
    for (const int snapshot : snapshots) {
        if (walk.take(snapshot))
            steps.push_back(walk.lastStep());
    }
    return steps;
}

int wholeWay(const std::vector<courseStep> &steps)
{
    return steps.empty() ? 0 : steps.back().way;
}

/// Bars that came to their end leave a multiple of 100; a script that tells the percent before each step may
/// end at 50 or 90.
bool wasGivenUp(const std::vector<courseStep> &steps)
{
    const int rest = wholeWay(steps) % 100;
    return rest > 0 && rest < 50;
}

/// By how much this run is longer for its amount; 1 where one is unknown or they are of no one kind.
double stretchFor(std::int64_t amount, std::int64_t learned)
{
    constexpr double most = 20;
    if (amount == 0 || learned == 0)
        return 1;
    const double stretch = static_cast<double>(amount) / static_cast<double>(learned);
    return stretch > most || stretch < 1 / most ? 1 : stretch;
}

/// Two moments of an earlier run: when it had come as far as this one, and until when it came no further.
struct passage {
    double reached;
    double left;
};

passage passageOf(const learnedCourse &record, int way)
{
    const auto beyond = std::ranges::upper_bound(record.steps, way, {}, &courseStep::way);
    const courseStep before = beyond == record.steps.begin() ? courseStep() : *std::prev(beyond);
    if (beyond == record.steps.end()) {
        const double last = before.second;
        return {last, std::max(last, double(record.total))};
    }
    const double share = double(way - before.way) / (beyond->way - before.way);
    return {before.second + share * (double(beyond->second) - before.second), double(beyond->second)};
}

double bell(double value, double width)
{
    return 1 / (1 + (value / width) * (value / width));
}

} // namespace

void adaptiveEstimate::prepare(const runTable &table)
{
    if (m_revision == table.revision())
        return;
    m_revision = table.revision();
    m_courses.clear();
    for (const auto &[time, index] : newestRecords(table)) {
        const runRecord &record = table[index];
        if (auto steps = courseSteps(record.snapshots); !wasGivenUp(steps))
            m_courses.push_back({record.total, record.amount, std::move(steps)});
    }
}

std::optional<remainingEstimate> adaptiveEstimate::remaining(const runTable &table, const progressRun &run,
                                                             int percent)
{
    prepare(table);
    const int elapsed = std::max(run.elapsed(), 0);
    const int standing = std::max(elapsed - run.lastStep().second, 0);
    double weights = 0;
    double sum = 0;
    double leastOverdue = std::numeric_limits<double>::max();
    for (const learnedCourse &record : m_courses) {
        if (wholeWay(record.steps) < run.lastStep().way)
            continue;
        const double stretch = stretchFor(run.amount(), record.amount);
        const double total = record.total * stretch;
        const passage passed = passageOf(record, run.lastStep().way);
        const double wait = (passed.left - passed.reached) * stretch;
        const double now = passed.reached * stretch + std::min<double>(standing, wait);
        const double known = std::min(1.0, now / (0.3 * total));
        const double pace = known * std::log(std::max(elapsed, 1) / std::max(now, 1.0));
        const double weight = bell(pace, 0.2) * bell(std::log(stretch), 0.3);
        sum += weight * (std::log(std::max(total - now, 0.5)) + 0.5 * pace);
        weights += weight;
        leastOverdue = std::min(leastOverdue, standing - wait);
    }
    if (weights > 0) {
        const double seconds = std::exp(sum / weights);
        return remainingEstimate{seconds, leastOverdue > seconds};
    }
    if (percent <= 0)
        return std::nullopt;
    return remainingEstimate{double(elapsed) * (100 - percent) / percent, false};
}
