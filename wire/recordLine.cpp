#include "wire/recordLine.h"

#include "wire/words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <string>

namespace wire
{

namespace
{

/// Snapshots beyond those that a run can have are never compared with any, and written out in full they would
/// make a line that is too long to be read again.
void readSnapshots(std::string_view text, std::vector<int> &snapshots)
{
    snapshots.clear();
    const char *const end = text.data() + text.size();
    for (const char *part = text.data(); part != end && snapshots.size() < mostSnapshots;) {
        int value = 0; // stays 0 if the number is too large
        const char *stop = std::from_chars(part, end, value).ptr;
        if (stop != end && *stop != '.') {
            stop = std::find(stop, end, '.');
            value = readNumber({part, static_cast<std::size_t>(stop - part)});
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

template <typename Number> bool wholeNumber(std::string_view text, Number &value)
{
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return stop == end && error == std::errc();
}

} // namespace

int readNumber(std::string_view text)
{
    int value = 0;
    if (wholeNumber(text, value))
        return value;
    constexpr std::string_view blanks = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text = text.substr(0, text.find_last_not_of(blanks) + 1);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    value = 0;
    return wholeNumber(text, value) ? value : 0;
}

std::int64_t readAmount(std::string_view text)
{
    std::int64_t value = 0;
    return wholeNumber(text, value) && value > 0 && value <= largestAmount ? value : 0;
}

bool recordReader::read(std::string_view line, recordLine &record)
{
    if (line.find(versionMark) != std::string_view::npos) {
        m_hasTimes = m_hasTimes || readNumber(line.substr(versionMark.size())) == 2;
        return false;
    }
    std::string withoutReturns;
    if (line.find('\r') != std::string_view::npos) {
        std::remove_copy(line.begin(), line.end(), std::back_inserter(withoutReturns), '\r');
        line = withoutReturns;
    }

    std::array<std::string_view, 5> fields;
    std::size_t count = 0;
    for (std::size_t at = 0; at <= line.size() && count < fields.size(); ++count) {
        fields[count] = line.substr(at, line.find(':', at) - at);
        at += fields[count].size() + 1;
    }
    const std::size_t first = m_hasTimes ? 1 : 0;
    if (count < first + 3)
        return false;
    record.time = m_hasTimes ? static_cast<unsigned>(readNumber(fields[0])) : 0;
    record.total = readNumber(fields[first]);
    record.found = readNumber(fields[first + 1]);
    readSnapshots(fields[first + 2], record.snapshots);
    record.amount = m_hasTimes && count == fields.size() ? readAmount(fields.back()) : 0;
    return record.total > 0;
}

std::string_view formatRecordLine(const recordLine &record, std::vector<char> &storage)
{
    constexpr std::size_t longestHeadAndAmount = 96;
    constexpr std::size_t longestNumber = sizeof "-2147483648.";
    storage.resize(std::max(storage.size(), longestHeadAndAmount + record.snapshots.size() * longestNumber));

    char *out = storage.data();
    out += std::sprintf(out, "%012u:%08d:%08d:", record.time, record.total, record.found);
    for (const int snapshot : record.snapshots) {
        out = writeNumber(snapshot, out);
        *out++ = '.';
    }
    if (record.amount > 0)
        out += std::sprintf(out, ":%lld", static_cast<long long>(record.amount));
    *out++ = '\n';
    return {storage.data(), static_cast<std::size_t>(out - storage.data())};
}

} // namespace wire
