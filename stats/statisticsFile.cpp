#include "stats/statisticsFile.h"

#include "log/dump.h"
#include "stats/lineReader.h"
#include "stats/runTable.h"
#include "stats/toInt.h"
#include "stats/trustedFile.h"
#include "wire/recordLine.h"

#include <QIODevice>

#include <fcntl.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

char datafile[1024];

namespace
{

constexpr const char *firstDirectory = "/var/instrument";
constexpr const char *fallbackDirectory = "/var/tmp";

/// The identifier that the process was started with; none while nothing is to be kept.
std::optional<std::string> m_ownIdentifier;

bool writePath(char (&path)[sizeof datafile], const char *directory, const char *identifier)
{
    const int length = std::snprintf(path, sizeof path, "%s/currentTimestamps_%s.txt", directory, identifier);
    if (length < static_cast<int>(sizeof path))
        return true;
    path[0] = '\0';
    return false;
}

fileDescriptor openDatafile(const char *identifier)
{
    for (const char *directory : {firstDirectory, fallbackDirectory}) {
        if (!writePath(datafile, directory, identifier))
            continue;
        if (trustedFile file = openTrusted(datafile, O_RDONLY); file.descriptor)
            return std::move(file.descriptor);
    }
    return fileDescriptor();
}

void addRecord(const wire::recordLine &line, const QDateTime &time)
{
    const int record = m_snapshotcount++;
    m_snapshottime[record] = time;
    m_snapshottotal[record] = line.total;
    m_snapshotfound[record] = line.found;
    setRecordData(record, line.snapshots);
}

int sumOfFoundCounts()
{
    std::int64_t sum = 0;
    for (int record = 0; record < m_snapshotcount; ++record)
        sum += m_snapshotfound[record];
    return toInt(sum);
}

void writeTable(QIODevice &file)
{
    dump("---- total statistics count", sumOfFoundCounts());
    file.write("fileversion=2\n");
    std::vector<char> storage;
    for (int record = 0; record < m_snapshotcount; ++record) {
        if (m_snapshotfound[record] <= 0)
            continue;
        const auto time = static_cast<unsigned>(m_snapshottime[record].toSecsSinceEpoch());
        const std::string_view line = wire::formatRecordLine(
            time, m_snapshottotal[record], m_snapshotfound[record], m_snapshotdata[record].get(),
            static_cast<std::size_t>(m_snapshottlen[record]), 0, storage);
        file.write(line.data(), static_cast<qint64>(line.size()));
    }
}

} // namespace

bool statisticsPathFits(const char *identifier)
{
    char path[sizeof datafile];
    return writePath(path, firstDirectory, identifier) && writePath(path, fallbackDirectory, identifier);
}

void loadStatistics(const char *identifier)
{
    m_ownIdentifier = identifier;
    const fileDescriptor file = openDatafile(identifier);
    if (!file)
        return;

    m_snapshotcount = 0;
    wire::recordColumns columns = wire::columnsVersion1;
    const QDateTime now = QDateTime::currentDateTime();
    lineReader lines(file.get());
    wire::recordLine record;
    while (m_snapshotcount < maxRecords) {
        const auto line = lines.next();
        if (!line)
            break;
        if (line->find(wire::versionMark) != std::string_view::npos) {
            if (wire::readNumber(line->substr(wire::versionMark.size())) == 2)
                columns = wire::columnsVersion2;
            continue;
        }
        if (wire::parseRecordLine(*line, columns, record) && record.total > 0)
            addRecord(record, columns.timecol < 0 ? now : QDateTime::fromSecsSinceEpoch(record.time));
    }
}

void saveStatistics(const char *identifier)
{
    if (identifier) {
        dump("---- saving statistic data with entry count", m_snapshotcount);
        writePath(datafile, firstDirectory, identifier);
    } else {
        dump("---- saving intermediate data with entry count", m_snapshotcount);
        if (!m_ownIdentifier)
            return;
        identifier = m_ownIdentifier->c_str();
    }

    if (replaceTrusted(datafile, writeTable))
        return;
    writePath(datafile, fallbackDirectory, identifier);
    replaceTrusted(datafile, writeTable);
}
