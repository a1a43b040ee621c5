#include "stats/runTable.h"

#include "log/dump.h"
#include "stats/progressRun.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>
#include <utility>

std::vector<int> runTable::fits() const
{
    std::vector<int> fits;
    for (const runRecord &record : m_records)
        fits.push_back(record.comparison.fits);
    return fits;
}

void runTable::assign(std::vector<runRecord> records)
{
    m_records = std::move(records);
    ++m_revision;
}

void runTable::put(int index, runRecord record)
{
    if (index == count())
        m_records.emplace_back();
    m_records[static_cast<std::size_t>(index)] = std::move(record);
    ++m_revision;
}

void runTable::lowerFoundCount(int index)
{
    int &found = m_records[static_cast<std::size_t>(index)].found;
    found -= found > 0 ? 1 : 0;
    ++m_revision;
}

namespace
{

void compare(recordComparison &sums, const std::vector<int> &record, const progressRun &run)
{
    const auto snapshots = run.snapshots();
    const auto seconds = run.seconds();
    const std::size_t end = std::min(snapshots.size(), record.size());
    for (std::size_t i = sums.compared; i < end; ++i) {
        const int time = record[i] / snapshotScale;
        sums.timeSum += std::abs(time - seconds[i]);
        sums.signatureSum +=
            std::abs((record[i] - time * snapshotScale) - (snapshots[i] - seconds[i] * snapshotScale));
    }
    sums.compared = end;
}

double distanceOf(const runRecord &record, const progressRun &run)
{
    recordComparison &sums = record.comparison;
    if (sums.runNumber != run.number())
        sums = {.runNumber = run.number()};
    compare(sums, record.snapshots, run);
    const double timePercent = static_cast<double>(sums.timeSum) / record.total * 100.0;
    const double distance = (timePercent + static_cast<double>(sums.signatureSum)) *
                            (1.0 / static_cast<double>(run.snapshots().size()));
    sums.fits = toInt(distance * 1000);
    return distance;
}

int leastUsedRecord(const runTable &table)
{
    const auto rank = [](const runRecord &record) { return std::tuple(record.found, record.time); };
    return static_cast<int>(std::ranges::min_element(table.records(), {}, rank) - table.records().begin());
}

void logPlace(const char *what, int index, const runTable &table)
{
    // There is a list, even while nothing stands in it.
    constexpr int nothing = 0;
    const std::vector<int> fits = table.fits();
    dump(what, index, table.count(), fits.empty() ? &nothing : fits.data());
}

} // namespace

nearestRecord findNearest(const runTable &table, const progressRun &run)
{
    const std::size_t length = run.snapshots().size();
    nearestRecord nearest{.distance = 1e38};
    for (int index = 0; index < table.count(); ++index) {
        const runRecord &record = table[index];
        if (record.found == 0)
            continue;
        const double distance = distanceOf(record, run);
        if (record.snapshots.size() >= length - length / 10 && distance < nearest.distance)
            nearest = {index, record.total, distance};
    }
    return nearest.index < 0 ? nearestRecord() : nearest;
}

void recordRun(runTable &table, const progressRun &run, int seconds, unsigned time)
{
    dump("   ++ new collected data:", seconds);
    const auto course = run.snapshots();
    runRecord record{{time, seconds, 1, {course.begin(), course.end()}, run.amount()}, {}};
    const nearestRecord nearest = findNearest(table, run);
    int index = nearest.index;
    if (index >= 0 && nearest.distance <= followDistance) {
        logPlace("#replacing data with index", index, table);
        const runRecord &old = table[index];
        record.total = toInt((std::int64_t{old.total} + seconds) / 2);
        record.found = toInt(std::int64_t{old.found} + 1);
        if (record.amount == 0)
            record.amount = old.amount;
    } else {
        const bool isFull = table.count() == static_cast<int>(runTable::maxRecords);
        index = isFull ? leastUsedRecord(table) : table.count();
        logPlace("#appending data with index", index, table);
    }
    record.comparison.fits = index < table.count() ? table[index].comparison.fits : 0;
    table.put(index, std::move(record));
}
