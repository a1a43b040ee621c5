#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// A moment of a run: whole seconds since its start, and how far the bars were: the sum of their percents,
/// with 100 more for each slot further (for one bar in slot 0, its percent), modulo 1000.
struct runMoment {
    int seconds = 0;
    int progress = 0;
};

/// A run, or several alike, that a daemon has learned.
struct runRecord {
    std::int64_t lastSeen = 0; ///< seconds since 1970; 0 when the file does not tell
    int seconds = 0;           ///< how long it takes
    int timesFound = 0;
    std::vector<runMoment> course;
};

/// Reads the text of a daemon's file of learned runs, in either of its versions. Lines that are no records
/// are left out, as the daemon leaves them out, and so is what goes beyond its table of 1024.
std::vector<runRecord> recordsFromText(std::string_view text);

/// The file of a daemon: a private one's if there is one, else in /var/instrument if there is one, else in
/// /var/tmp.
std::string recordsPath(const std::string &identifier);
