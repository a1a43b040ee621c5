#include "progressctl/runRecords.h"

#include "wire/places.h"
#include "wire/recordLine.h"

#include <algorithm>
#include <unistd.h>

namespace
{

constexpr std::size_t mostRecords = 1024;

runRecord recordFrom(const wire::recordLine &line)
{
    runRecord record{line.time, line.total, line.found, {}};
    record.course.reserve(line.snapshots.size());
    for (const int snapshot : line.snapshots)
        record.course.push_back({snapshot / 1000, snapshot % 1000});
    return record;
}

} // namespace

std::vector<runRecord> recordsFromText(std::string_view text)
{
    std::vector<runRecord> records;
    wire::recordColumns columns = wire::columnsVersion1;
    wire::recordLine read;
    while (!text.empty() && records.size() < mostRecords) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        if (line.find(wire::versionMark) != std::string_view::npos) {
            if (wire::readNumber(line.substr(wire::versionMark.size())) == 2)
                columns = wire::columnsVersion2;
        } else if (wire::parseRecordLine(line, columns, read) && read.total > 0) {
            records.push_back(recordFrom(read));
        }
    }
    return records;
}

std::string recordsPath(const std::string &identifier)
{
    if (const std::string own = wire::learnedPath(identifier); ::access(own.c_str(), R_OK) == 0)
        return own;
    const std::string name = "/currentTimestamps_" + identifier + ".txt";
    const std::string preferred = "/var/instrument" + name;
    return ::access(preferred.c_str(), R_OK) == 0 ? preferred : "/var/tmp" + name;
}
