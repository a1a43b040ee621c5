#pragma once

#include <QDateTime>

#include <memory>
#include <span>

/// The run record table: parallel arrays, record k being entry k of each, for k from 0 to
/// `m_snapshotcount` - 1. Records are neither removed nor reordered while the process runs.
inline constexpr int maxRecords = 1024;

/// When the record was made or last had a run merged into it.
extern QDateTime m_snapshottime[maxRecords];
/// Duration in seconds; above 0 for every record in the table.
extern int m_snapshottotal[maxRecords];
/// Found count: how many runs the record stands for. It falls when a run stops following the record; a
/// record whose count is 0 takes no part in matching and is left out of the file.
extern int m_snapshotfound[maxRecords];
/// Number of snapshots.
extern int m_snapshottlen[maxRecords];
/// The snapshots, owned by the table. Changed through `setRecordData` only.
extern std::unique_ptr<int[]> m_snapshotdata[maxRecords];
/// The distance from the run in progress at the last matching × 1000; for the log only.
extern int m_snapshotfits[maxRecords];
/// Changes with the record's snapshots.
extern unsigned m_snapshotrevision[maxRecords];
/// Number of records.
extern int m_snapshotcount;
/// Changes with the snapshots of any record and with the found counts that `lowerFoundCount` has lowered.
extern unsigned m_tableRevision;

/// Gives `record` a copy of `snapshots` in place of those it had. `record` lies inside the arrays; it may
/// be the entry after the last record.
void setRecordData(int record, std::span<const int> snapshots);

/// Takes one off the record's found count, which never falls below 0 that way.
void lowerFoundCount(int record);
