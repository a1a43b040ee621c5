#pragma once

#include "stats/estimate.h"
#include "stats/progressRun.h"
#include "stats/runTable.h"
#include "stats/statisticsFile.h"

#include <vector>

/// What the process knows of runs: those that were learned, with their file, the one in progress and its
/// estimate. All dialogs share it, and it belongs to the main thread.
class runStatistics
{
public:
    /// A setting, written by the configuration. A change takes effect at the next tick.
    estimateMode m_estimateMode = estimateMode::exact;

    /// Fills the table from the file of `identifier`, which is the process's own from now on. Without a
    /// readable file the table stays as it is.
    void load(const char *identifier, statisticsPlace place = statisticsPlace::machine);
    /// The save after each run.
    void save();
    /// The save at the end of the process. One that shares its file saves nothing unless it has learned
    /// something that is not saved yet.
    void saveFinally(const char *identifier);

    /// How much this run, or else the next one, has to do; 0 takes it back. See `progressRun::setAmount`.
    void setAmount(std::int64_t amount) { m_run.setAmount(amount); }

    void startRun();
    /// The run ends. It was `seconds` long; below 1, it is not learned.
    void endRun(int seconds);
    /// Seconds since the run's start, told once a second.
    void setElapsed(std::int64_t seconds) { m_run.setElapsed(seconds); }
    /// Adds this moment of the run.
    void addSnapshot(int actualProgress) { m_run.addSnapshot(actualProgress); }
    /// Goes on with the estimate once the elapsed time has been told; see `runEstimate::advance`.
    estimateStep advance(int percent, int dialogIdentity);

    runEstimate &estimate() { return m_estimate; }
    const progressRun &run() const { return m_run; }
    runTable &table() { return m_table; }
    const statisticsFile &file() const { return m_file; }

private:
    /// One that this process has learned.
    struct finishedRun {
        progressRun run;
        int seconds;
        unsigned time;
    };

    void record(const finishedRun &finished);

    progressRun m_run;
    runTable m_table;
    runEstimate m_estimate;
    statisticsFile m_file;
    /// Those since the last save to a file that is shared with others.
    std::vector<finishedRun> m_unsaved;
};

extern runStatistics statistics;
