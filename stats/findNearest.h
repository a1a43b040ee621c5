#pragma once

/// A record this near to the run in progress is followed, and a finished run is merged into it.
inline constexpr double followDistance = 5.0;

/// Matches the snapshot pool, which holds at least one snapshot, against the run record table.
///
/// The distance of a record is the mean deviation over the snapshots of the run: that of the elapsed time,
/// in percent of the record's duration, plus that of the signature. It is 0 for a run that repeats the
/// record. Positions that the record does not have deviate by nothing, so a record much shorter than the run
/// (by more than a tenth) is no candidate.
///
/// Returns the duration in seconds of the nearest candidate, the first of equals, and sets `index` to it and
/// `incernity` to its distance. Without a candidate returns -1, sets `index` to -1 and leaves `incernity`
/// alone. `m_snapshotfits` is written for every record that has a found count, candidate or not.
///
/// The cost is that of the snapshots that were added since the last call.
int findNearest(double &incernity, int &index);
