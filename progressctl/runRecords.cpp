#include "progressctl/runRecords.h"

#include <algorithm>
#include <charconv>
#include <unistd.h>

namespace
{

constexpr std::size_t mostRecords = 1024;
constexpr std::string_view versionMark = "fileversion=";

/// Where the fields of a record stand in its line.
struct layout {
    int time;
    std::size_t seconds;
    std::size_t timesFound;
    std::size_t course;
};
constexpr layout firstLayout{-1, 0, 1, 2};
constexpr layout secondLayout{0, 1, 2, 3};

std::vector<std::string_view> split(std::string_view text, char separator)
{
    std::vector<std::string_view> parts;
    for (;;) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos)
            return parts;
        text.remove_prefix(end + 1);
    }
}

/// As the daemon reads numbers: blanks around and a sign are fine, everything else is 0.
template <typename Number> Number numberFrom(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\v\f";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return 0;
    text = text.substr(first, text.find_last_not_of(blanks) - first + 1);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-')
        text.remove_prefix(1);
    Number number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc{} && end == text.data() + text.size() ? number : 0;
}

std::vector<runMoment> courseFrom(std::string_view text)
{
    std::vector<std::string_view> parts = split(text, '.');
    if (parts.back().empty())
        parts.pop_back();
    std::vector<runMoment> course;
    course.reserve(parts.size());
    for (const std::string_view part : parts) {
        const int snapshot = numberFrom<int>(part);
        course.push_back({snapshot / 1000, snapshot % 1000});
    }
    return course;
}

} // namespace

std::vector<runRecord> recordsFromText(std::string_view text)
{
    std::vector<runRecord> records;
    layout columns = firstLayout;
    for (std::string_view line : split(text, '\n')) {
        line = line.substr(0, line.find('\r'));
        if (line.find(versionMark) != std::string_view::npos) {
            if (numberFrom<int>(line.substr(std::min(line.size(), versionMark.size()))) == 2)
                columns = secondLayout;
            continue;
        }
        const std::vector<std::string_view> fields = split(line, ':');
        if (fields.size() <= columns.course || records.size() == mostRecords)
            continue;
        runRecord record;
        if (columns.time >= 0)
            record.lastSeen = numberFrom<std::int64_t>(fields[static_cast<std::size_t>(columns.time)]);
        record.seconds = numberFrom<int>(fields[columns.seconds]);
        record.timesFound = numberFrom<int>(fields[columns.timesFound]);
        if (record.seconds <= 0)
            continue;
        record.course = courseFrom(fields[columns.course]);
        records.push_back(std::move(record));
    }
    return records;
}

std::string recordsPath(const std::string &identifier)
{
    const std::string name = "/currentTimestamps_" + identifier + ".txt";
    const std::string preferred = "/var/instrument" + name;
    return ::access(preferred.c_str(), R_OK) == 0 ? preferred : "/var/tmp" + name;
}
