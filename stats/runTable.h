#pragma once

#include "wire/recordLine.h"

class progressRun;

/// What the last matching of a record with the run in progress left for the next one, which goes on from
/// there. All sums are integers, so that the distance is the very same as from the start.
struct recordComparison {
    /// That of the run; 0 is none.
    unsigned runNumber = 0;
    /// Snapshots that have been compared.
    std::size_t compared = 0;
    std::int64_t timeSum = 0;
    std::int64_t signatureSum = 0;
    /// The distance × 1000, for the log only.
    int fits = 0;
};

/// A record of the table. Its total is above 0. Its found count falls when a run stops following it; at 0 it
/// takes no part in matching and is left out of the file.
struct runRecord : wire::recordLine {
    mutable recordComparison comparison;
};

/// The learned runs. Records are neither removed nor reordered while the process runs, but where the file has
/// been read anew.
class runTable
{
public:
    static constexpr std::size_t maxRecords = 1024;

    const std::vector<runRecord> &records() const { return m_records; }
    const runRecord &operator[](int record) const { return m_records[static_cast<std::size_t>(record)]; }
    int count() const { return static_cast<int>(m_records.size()); }
    /// Changes with every record.
    unsigned revision() const { return m_revision; }
    /// The comparisons' distances, in the order of the records.
    std::vector<int> fits() const;

    /// At most `maxRecords`.
    void assign(std::vector<runRecord> records);
    /// Puts `record` into the place of another one or, with the index `count()`, behind the last; the table
    /// must not be full then.
    void put(int index, runRecord record);
    /// Takes one off the record's found count, which never falls below 0 that way.
    void lowerFoundCount(int index);

private:
    std::vector<runRecord> m_records;
    unsigned m_revision = 1;
};

/// A record this near to the run in progress is followed, and a finished run is merged into it.
inline constexpr double followDistance = 5.0;

struct nearestRecord {
    /// -1: there is no candidate. The other two are -1 and 0 then.
    int index = -1;
    /// Its duration in seconds.
    int total = -1;
    double distance = 0.0;
};

/// Matches the run, which has at least one snapshot, against the table.
///
/// The distance of a record is the mean deviation over the snapshots of the run: that of the elapsed time,
/// in percent of the record's duration, plus that of the signature. It is 0 for a run that repeats the
/// record. Positions that the record does not have deviate by nothing, so a record much shorter than the run
/// (by more than a tenth) is no candidate. Of equals the first is the nearest.
///
/// The cost is that of the snapshots that were added since the last call.
nearestRecord findNearest(const runTable &table, const progressRun &run);

/// Records the run, which has ended at `time` after `seconds` (at least 1), and has at least one snapshot.
///
/// It is merged into the most similar record if that is near enough: the record takes over the course, the
/// amount if there is one, and half of the difference in duration. Any other run becomes a record of its own;
/// in a full table it takes the place of the record with the lowest found count, the oldest of those.
void recordRun(runTable &table, const progressRun &run, int seconds, unsigned time);
