#pragma once

#include "stats/estimateMode.h"

/// The estimate of the run in progress, shared by all dialogs. All three are -1 until the first run starts,
/// and are written by the functions below only.
///
/// Whole seconds from the start of the run to the last tick; the time part of new snapshots.
extern int m_currentElapsed;
/// Estimated duration of the run in seconds, or -1: that of the record that it follows, in the adaptive mode
/// a new one at every tick.
extern int m_currentTotal;
/// Index of the record that the run follows, or -1.
extern int m_currentFound;

/// A run starts: no time has passed, and it has no snapshots.
void startEstimate();

/// A run ends: there is no estimate any more.
void resetEstimate();

/// What a tick leaves the dialog to do.
enum class estimateStep {
    nothing,
    /// The record was given up: the total bar gets its caption back.
    dropped,
    /// There is no estimate where there was one: show the average again.
    vanished,
    /// Show what remains of `m_currentTotal`.
    display,
};

/// A tick, once a second, `elapsed` seconds after the run's start, while the average is `percent`. In the
/// exact mode the run is matched against the records, which decides whether to follow the nearest, to hold on
/// to the record followed so far, or to drop it. `dialogIdentity` goes into the log.
estimateStep advanceEstimate(int elapsed, int percent, int dialogIdentity);

/// A tick outside a run: the estimate stays as it is.
estimateStep holdEstimate(int elapsed);
