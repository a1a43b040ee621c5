#pragma once

/// The estimate of the run in progress, shared by all dialogs. All three are -1 until the first run starts.
///
/// Whole seconds from the start of the run to the last tick, stored by the dialog that ticks; the time part
/// of new snapshots.
extern int m_currentElapsed;
/// Duration in seconds of the record that the run follows, or -1 while it follows none.
extern int m_currentTotal;
/// Index of that record, or -1.
extern int m_currentFound;

/// A run starts: no time has passed.
void startEstimate();

/// A run ends: no record is followed any more.
void resetEstimate();

/// What a tick leaves the dialog to do.
enum class estimateStep {
    nothing,
    /// The estimate was given up: the total bar gets its caption back.
    dropped,
    /// Show what remains of `m_currentTotal`.
    display,
};

/// Matches the run in progress against the records, once a second, and decides whether to follow the nearest,
/// to hold on to the record followed so far, or to drop it. `elapsed` (seconds) and `dialogIdentity` go into
/// the log.
estimateStep advanceEstimate(int elapsed, int dialogIdentity);
