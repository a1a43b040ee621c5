// usage: replay DIRECTORY TABLE
//
// Replays the courses recorded in DIRECTORY, second by second, through the estimate: each run after the other
// two of its job have been learned. Writes one line a second to TABLE for drawing, and prints how far the
// estimate and the linear one, elapsed × (100 − percent) / percent, were from the truth.

#include "stats/estimate.h"
#include "stats/recordRun.h"
#include "stats/runTable.h"
#include "stats/snapshots.h"
#include "stats/statisticsFile.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include <unistd.h>

namespace
{

constexpr int runsOfJob = 3;

struct change {
    int milliseconds;
    int percent;
};

struct course {
    std::vector<change> changes;
    int seconds() const { return changes.back().milliseconds / 1000; }
};

/// What was known at one second of a run.
struct moment {
    int elapsed;
    int remaining;
    std::optional<double> learned;
    std::optional<double> linear;
};

course readCourse(const std::string &path)
{
    std::ifstream file(path);
    course result;
    for (change next; file >> next.milliseconds >> next.percent;)
        result.changes.push_back(next);
    if (result.changes.empty()) {
        std::fprintf(stderr, "no course in %s\n", path.c_str());
        std::exit(1);
    }
    return result;
}

/// What the daemon does on a client's update.
void update(int percent)
{
    static int shown = -1;
    if (m_nextSnap > 0 && percent == shown)
        return;
    shown = percent;
    addSnapshot(percent);
}

/// What the daemon does once a second.
std::optional<double> tick(int elapsed)
{
    m_currentElapsed = elapsed;
    const bool isShown = advanceEstimate(elapsed, 0) == estimateStep::display && m_currentTotal >= elapsed;
    return isShown ? std::optional<double>(m_currentTotal - elapsed) : std::nullopt;
}

std::vector<moment> replay(const course &run)
{
    std::vector<moment> moments;
    startEstimate();
    clearSnapshots();
    auto next = run.changes.begin();
    int percent = 0;
    for (int elapsed = 1; elapsed <= run.seconds(); ++elapsed) {
        for (; next != run.changes.end() && next->milliseconds <= elapsed * 1000; ++next) {
            percent = next->percent;
            update(percent);
        }
        moment now = {elapsed, run.seconds() - elapsed, tick(elapsed), std::nullopt};
        if (percent > 0)
            now.linear = elapsed * (100.0 - percent) / percent;
        moments.push_back(now);
    }
    for (; next != run.changes.end(); ++next)
        update(next->percent);
    resetEstimate();
    return moments;
}

void learn(const course &run)
{
    replay(run);
    recordRun(run.seconds());
}

/// Sums of the errors, in seconds; those of the learned estimate, and of the linear one beside it, over the
/// seconds in which both exist.
struct errorSums {
    int seconds = 0;
    int learnedSeconds = 0;
    int linearSeconds = 0;
    int bothSeconds = 0;
    int learnedNearer = 0;
    double learned = 0;
    double linearBeside = 0;
    double linearAlways = 0;

    void add(const moment &now)
    {
        ++seconds;
        learnedSeconds += now.learned.has_value();
        if (!now.linear)
            return;
        const double linearError = std::abs(*now.linear - now.remaining);
        ++linearSeconds;
        linearAlways += linearError;
        if (!now.learned)
            return;
        const double learnedError = std::abs(*now.learned - now.remaining);
        ++bothSeconds;
        learned += learnedError;
        linearBeside += linearError;
        learnedNearer += learnedError < linearError;
    }

    void print(const std::string &job, int run, int duration) const
    {
        const auto mean = [](double sum, int count) { return count ? sum / count : 0.0; };
        std::printf("| %s | %d | %d s | %.0f %% | %.1f s | %.1f s | %.0f %% | %.1f s |\n", job.c_str(), run,
                    duration, mean(100 * learnedSeconds, seconds), mean(learned, bothSeconds),
                    mean(linearBeside, bothSeconds), mean(100 * learnedNearer, bothSeconds),
                    mean(linearAlways, linearSeconds));
    }
};

void writeMoment(std::FILE *table, const std::string &job, int run, int duration, const moment &now)
{
    const auto error = [&](const std::optional<double> &estimate) {
        return estimate ? std::to_string(std::abs(*estimate - now.remaining) * 100 / duration) : "-";
    };
    std::fprintf(table, "%s %d %.2f %s %s\n", job.c_str(), run, 100.0 * now.elapsed / duration,
                 error(now.learned).c_str(), error(now.linear).c_str());
}

void compare(const std::string &job, const std::vector<course> &runs, std::FILE *table)
{
    for (int tested = 0; tested < runsOfJob; ++tested) {
        m_snapshotcount = 0;
        for (int other = 0; other < runsOfJob; ++other)
            if (other != tested)
                learn(runs[static_cast<std::size_t>(other)]);

        const course &run = runs[static_cast<std::size_t>(tested)];
        errorSums sums;
        for (const moment &now : replay(run)) {
            sums.add(now);
            writeMoment(table, job, tested + 1, run.seconds(), now);
        }
        sums.print(job, tested + 1, run.seconds());
    }
    std::fputs("\n\n", table);
}

} // namespace

int main(int argc, char **argv)
{
    std::FILE *table = argc == 3 ? std::fopen(argv[2], "w") : nullptr;
    if (!table) {
        std::fprintf(stderr, "usage: replay DIRECTORY TABLE\n");
        return 1;
    }
    // Learning saves the table after each run.
    loadStatistics(("replay-" + std::to_string(getpid())).c_str());
    std::puts(
        "| job | run | took | learned estimate there | its error | linear, same seconds | learned nearer "
        "| linear, all seconds |\n|---|---|---|---|---|---|---|---|");
    for (const std::string job : {"archive", "build", "copy"}) {
        std::vector<course> runs;
        for (int run = 1; run <= runsOfJob; ++run)
            runs.push_back(readCourse(argv[1] + ('/' + job) + std::to_string(run) + ".txt"));
        compare(job, runs, table);
    }
    std::fclose(table);
    unlink(datafile);
}
