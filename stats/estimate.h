#pragma once

#include "stats/adaptiveEstimate.h"
#include "wire/calmTime.h"

#include <QString>

/// How the remaining time of a run is estimated.
enum class estimateMode {
    /// From the record that the run follows, as long as it follows one.
    exact,
    /// From all records, whatever course the run takes.
    adaptive,
};

/// What a tick leaves the dialog to do.
enum class estimateStep {
    nothing,
    /// The record was given up: the total bar gets its caption back.
    dropped,
    /// There is no estimate where there was one: show the average again.
    vanished,
    /// Show what remains of the estimate's total.
    display,
};

/// What remains, for the layouts to show.
struct remainingTime {
    /// 0 or more.
    int seconds;
    /// The same for eyes that rest on it.
    int calmSeconds;
    /// The seconds have stood for longer than they say.
    bool isOverdue;
};

/// The estimate of the run in progress.
class runEstimate
{
public:
    /// The run has just started: what takes long is done before its first tick.
    void start(estimateMode mode, const runTable &table);
    /// There is no estimate any more.
    void reset();
    /// A tick, once a second, after the run has been told the elapsed time. The run's average is `percent`.
    /// In the exact mode it is matched against the records, which decides whether to follow the nearest, to
    /// hold on to the record followed so far, or to drop it. `dialogIdentity` goes into the log.
    estimateStep advance(estimateMode mode, runTable &table, const progressRun &run, int percent,
                         int dialogIdentity);

    /// Estimated duration of the run in seconds, or -1: that of the record that it follows, in the adaptive
    /// mode a new one at every tick.
    int total() const { return m_total; }
    /// Index of the record that the run follows, or -1.
    int found() const { return m_found; }
    /// Of an estimate that the run, `elapsed` seconds after its start, has not outlasted.
    remainingTime remaining(int elapsed);

private:
    estimateStep advanceExact(runTable &table, const progressRun &run, int dialogIdentity);
    estimateStep advanceAdaptive(const runTable &table, const progressRun &run, int percent);
    void follow(runTable &table, const nearestRecord &nearest, int dialogIdentity);
    void drop(runTable &table, const nearestRecord &nearest, int elapsed);
    void leaveFollowedRecord(runTable &table) const;

    int m_total = -1;
    int m_found = -1;
    estimateMode m_mode = estimateMode::exact; ///< of the estimate in force
    bool m_isOverdue = false;
    wire::calmTime m_calm;
    adaptiveEstimate m_adaptive;
};

/// The remaining time as the grid's total bar shows it: whole minutes above 300 seconds, minutes and seconds
/// from 60 on, seconds below. Empty for a negative one: the run has outlasted its estimate.
QString remainingText(int remainingSeconds);
