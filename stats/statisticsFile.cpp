#include "stats/statisticsFile.h"

#include "app/dump.h"
#include "stats/fileDescriptor.h"
#include "stats/lineReader.h"
#include "stats/recordLine.h"
#include "stats/replacedFile.h"
#include "stats/runTable.h"
#include "stats/toInt.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

char datafile[1024];

namespace
{

constexpr const char *firstDirectory = "/var/instrument";
constexpr const char *fallbackDirectory = "/var/tmp";
constexpr std::string_view versionMark = "fileversion=";

/// The identifier that the process was started with.
std::string m_ownIdentifier;

bool writePath(char (&path)[sizeof datafile], const char *directory, const char *identifier)
{
    const int length = std::snprintf(path, sizeof path, "%s/currentTimestamps_%s.txt", directory, identifier);
    if (length < static_cast<int>(sizeof path))
        return true;
    path[0] = '\0';
    return false;
}

/// Opens a regular file: a directory in its place counts as no file, and a pipe would wait for a writer.
fileDescriptor openForReading(const char *path)
{
    fileDescriptor file(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status;
    if (file && fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode))
        return file;
    return fileDescriptor();
}

fileDescriptor openDatafile(const char *identifier)
{
    for (const char *directory : {firstDirectory, fallbackDirectory}) {
        if (!writePath(datafile, directory, identifier))
            continue;
        if (fileDescriptor file = openForReading(datafile))
            return file;
    }
    return fileDescriptor();
}

void addRecord(const recordLine &line, const QDateTime &time)
{
    const int record = m_snapshotcount++;
    m_snapshottime[record] = time;
    m_snapshottotal[record] = line.total;
    m_snapshotfound[record] = line.found;
    setRecordData(record, line.snapshots);
}

bool writeAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(descriptor, text.data(), text.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool writeTable(int descriptor)
{
    std::vector<char> storage;
    if (!writeAll(descriptor, "fileversion=2\n"))
        return false;
    for (int record = 0; record < m_snapshotcount; ++record) {
        if (m_snapshotfound[record] <= 0)
            continue;
        const std::span snapshots(m_snapshotdata[record].get(),
                                  static_cast<std::size_t>(m_snapshottlen[record]));
        const auto time = static_cast<unsigned>(m_snapshottime[record].toSecsSinceEpoch());
        if (!writeAll(descriptor, formatRecordLine(time, m_snapshottotal[record], m_snapshotfound[record],
                                                   snapshots, storage)))
            return false;
    }
    return true;
}

int sumOfFoundCounts()
{
    std::int64_t sum = 0;
    for (int record = 0; record < m_snapshotcount; ++record)
        sum += m_snapshotfound[record];
    return toInt(sum);
}

/// False if the file at `path` cannot be written.
bool writeTableTo(const char *path)
{
    replacedFile file(path);
    if (!file.isOpen())
        return false;
    dump("---- total statistics count", sumOfFoundCounts());
    file.replace(writeTable);
    return true;
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
    recordColumns columns = columnsVersion1;
    const QDateTime now = QDateTime::currentDateTime();
    lineReader lines(file.get());
    recordLine record;
    while (m_snapshotcount < maxRecords) {
        const auto line = lines.next();
        if (!line)
            break;
        if (line->find(versionMark) != std::string_view::npos) {
            if (readNumber(line->substr(versionMark.size())) == 2)
                columns = columnsVersion2;
            continue;
        }
        if (parseRecordLine(*line, columns, record) && record.total > 0)
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
        identifier = m_ownIdentifier.c_str();
    }

    if (writeTableTo(datafile))
        return;
    writePath(datafile, fallbackDirectory, identifier);
    writeTableTo(datafile);
}
