#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// The text of one run record in the statistics file: fields separated by ":", numbers in decimal.
namespace wire
{

/// Stands at the front of a line that tells the version of those behind it.
inline constexpr std::string_view versionMark = "fileversion=";

/// Snapshots that a run can have.
inline constexpr std::size_t mostSnapshots = 4094;

/// A finished run, or several alike.
struct recordLine {
    /// Seconds since 1970-01-01 00:00 UTC when it was made or last had a run merged into it; 0 where the line
    /// holds no time.
    unsigned time = 0;
    /// Duration in seconds.
    int total = 0;
    /// How many runs it stands for.
    int found = 0;
    std::vector<int> snapshots;
    /// How much there was to do; 0 for a run that did not tell.
    std::int64_t amount = 0;
};

/// A run's amount as it is told and kept: 1 to 2⁵³, in digits alone; 0 for any other text.
std::int64_t readAmount(std::string_view text);

/// Reads a number as the toolkit does: white space around it and a sign are allowed, anything else (nothing,
/// letters, more than an int holds) reads as 0.
int readNumber(std::string_view text);

/// Reads the lines of a file, from the first on.
class recordReader
{
public:
    /// Reads `line` (without line end; carriage returns anywhere in it are ignored) into `record`, whose
    /// storage is used again. False for a line that is none of a run: it tells the version of those behind
    /// it, has too few fields, or no duration. `record` is then not to be used.
    bool read(std::string_view line, recordLine &record);
    /// Whether the lines hold a time, as from version 2 on.
    bool hasTimes() const { return m_hasTimes; }

private:
    bool m_hasTimes = false;
};

/// The line of a record in version 2, with its line feed; the fifth field only where there is an amount. The
/// text lies in `storage` and is valid until that is used again.
std::string_view formatRecordLine(const recordLine &record, std::vector<char> &storage);

} // namespace wire
