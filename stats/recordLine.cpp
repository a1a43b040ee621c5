#include "stats/recordLine.h"

#include "stats/snapshots.h"

#include <QString>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <string>

namespace
{

constexpr std::size_t mostFields = 4;
using fieldArray = std::array<std::string_view, mostFields>;

/// Fills `fields` with the first fields of `line` and returns how many there are, at most `mostFields`.
std::size_t splitFields(std::string_view line, fieldArray &fields)
{
    std::size_t count = 0;
    while (count < mostFields) {
        const std::size_t colon = line.find(':');
        fields[count++] = line.substr(0, colon);
        if (colon == std::string_view::npos)
            break;
        line.remove_prefix(colon + 1);
    }
    return count;
}

/// Snapshots beyond those that a run can have are never compared with any, and written out in full they would
/// make a line that is too long to be read again.
void readSnapshots(std::string_view text, std::vector<int> &snapshots)
{
    constexpr std::size_t most = maxSnapshots;
    snapshots.clear();
    const char *const end = text.data() + text.size();
    for (const char *part = text.data(); part != end && snapshots.size() < most;) {
        int value = 0; // stays 0 if the number is too large
        const char *stop = std::from_chars(part, end, value).ptr;
        if (stop != end && *stop != '.') {
            stop = std::find(stop, end, '.');
            value = readNumber({part, stop});
        }
        snapshots.push_back(value);
        part = stop == end ? end : stop + 1;
    }
}

/// At least eight characters, padded with zeros behind the sign; at most eleven.
char *writeNumber(int value, char *out)
{
    if (value < 0 || value > 99'999'999)
        return out + std::sprintf(out, "%08d", value);
    char digits[9];
    std::to_chars(digits, std::end(digits), 100'000'000 + value); // the 1 in front keeps the zeros
    return std::copy_n(digits + 1, 8, out);
}

} // namespace

int readNumber(std::string_view text)
{
    int value = 0;
    const char *const end = text.data() + text.size();
    if (std::from_chars(text.data(), end, value).ptr == end)
        return value;
    // The toolkit would let a zero byte end the number.
    if (text.find('\0') != std::string_view::npos)
        return 0;
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size())).toInt();
}

bool parseRecordLine(std::string_view line, const recordColumns &columns, recordLine &record)
{
    std::string withoutReturns;
    if (line.find('\r') != std::string_view::npos) {
        std::ranges::remove_copy(line, std::back_inserter(withoutReturns), '\r');
        line = withoutReturns;
    }

    fieldArray fields;
    if (splitFields(line, fields) <= static_cast<std::size_t>(columns.valscol))
        return false;
    const auto field = [&](int column) { return fields[static_cast<std::size_t>(column)]; };
    record.time = columns.timecol < 0 ? 0 : static_cast<unsigned>(readNumber(field(columns.timecol)));
    record.total = readNumber(field(columns.totalcol));
    record.found = readNumber(field(columns.countcol));
    readSnapshots(field(columns.valscol), record.snapshots);
    return true;
}

std::string_view formatRecordLine(unsigned time, int total, int found, std::span<const int> snapshots,
                                  std::vector<char> &storage)
{
    constexpr std::size_t longestHead = 64;
    constexpr std::size_t longestNumber = sizeof "-2147483648.";
    storage.resize(std::max(storage.size(), longestHead + snapshots.size() * longestNumber));

    char *out = storage.data();
    out += std::sprintf(out, "%012u:%08d:%08d:", time, total, found);
    for (const int snapshot : snapshots) {
        out = writeNumber(snapshot, out);
        *out++ = '.';
    }
    *out++ = '\n';
    return {storage.data(), out};
}
