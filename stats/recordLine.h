#pragma once

#include <optional>
#include <span>
#include <string_view>
#include <vector>

/// The text of one run record in the statistics file: fields separated by ":", numbers in decimal.

/// Which field of a line holds what; the time is missing (-1) in files of version 1.
struct recordColumns {
    int timecol = -1;
    int totalcol = 0;
    int countcol = 1;
    int valscol = 2;
};
inline constexpr recordColumns columnsVersion1;
inline constexpr recordColumns columnsVersion2 = {0, 1, 2, 3};

struct recordLine {
    /// Seconds since 1970-01-01 00:00 UTC; 0 where the line holds no time.
    unsigned time;
    /// Seconds.
    int total;
    int found;
    std::vector<int> snapshots;
};

/// Reads a number as the toolkit does: white space around it and a sign are allowed, anything else (nothing,
/// letters, more than an int holds) reads as 0.
int readNumber(std::string_view text);

/// Reads `line` (without line end; carriage returns anywhere in it are ignored) into `record`, whose storage
/// is used again. False for a line with too few fields; `record` is then not to be used.
bool parseRecordLine(std::string_view line, const recordColumns &columns, recordLine &record);

/// The line of a record in version 2, with its line feed. The text lies in `storage` and is valid until that
/// is used again.
std::string_view formatRecordLine(unsigned time, int total, int found, std::span<const int> snapshots,
                                  std::vector<char> &storage);
