#pragma once

#include "wire/recordLine.h"

/// A snapshot is a moment of a run in one int: elapsed seconds × 1000 + the progress signature, which lies
/// between -999 and 999 and has the sign of the elapsed time wherever the daemon itself made it. Decoding
/// is the int division by 1000, truncated toward zero.
inline constexpr int snapshotScale = 1000;

/// The pool never holds more snapshots than this.
inline constexpr int maxSnapshots = wire::mostSnapshots;

/// The snapshot pool: the course of the run in progress, in the order in which it was taken. It is written
/// by the two functions below only; matching goes on from what it has already read.
extern int m_snapshots[4096];
/// Number of snapshots in the pool.
extern int m_nextSnap;
/// Changes whenever the pool is emptied.
extern unsigned m_poolRevision;

/// Empties the pool.
void clearSnapshots();

/// Adds the moment `m_currentElapsed` with the signature `actualProgress` modulo 1000; a full pool stays as
/// it is.
void addSnapshot(int actualProgress);
