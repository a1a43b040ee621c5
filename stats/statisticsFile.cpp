#include "stats/statisticsFile.h"

#include "log/dump.h"
#include "stats/progressRun.h"
#include "wire/places.h"
#include "wire/recordLine.h"

#include <QDir>
#include <QFile>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

namespace
{

constexpr const char *firstDirectory = "/var/instrument";
constexpr const char *fallbackDirectory = "/var/tmp";

constexpr QFileDevice::Permissions onlyOwn = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
/// Even where the user's mask would let others write.
constexpr QFileDevice::Permissions othersRead = onlyOwn | QFileDevice::ReadUser | QFileDevice::WriteUser |
                                                QFileDevice::ReadGroup | QFileDevice::ReadOther;

/// Empty when it is too long.
std::string machinesPath(const char *directory, const char *identifier)
{
    constexpr std::size_t longest = 1023;
    std::string path = std::string(directory) + "/currentTimestamps_" + identifier + ".txt";
    return path.size() <= longest ? path : std::string();
}

/// Reads lines through a buffer of fixed size; those of more than 64 KiB are passed over whole.
class lineReader
{
public:
    explicit lineReader(const wire::descriptor &file) : m_file(file) {}

    /// Without the line feed, which a last line need not have. Valid until the next call.
    std::optional<std::string_view> next()
    {
        for (bool isTooLong = false;;) {
            const std::string_view unread(m_buffer.data() + m_begin, m_end - m_begin);
            const std::size_t length = unread.find('\n');
            const bool isFound = length != std::string_view::npos;
            if (isFound || !refill(unread)) {
                const std::string_view line(m_buffer.data() + m_begin, isFound ? length : m_end - m_begin);
                m_begin += line.size() + (isFound ? 1 : 0);
                if (!isFound && line.empty())
                    return std::nullopt;
                if (!std::exchange(isTooLong, false) && line.size() <= longest)
                    return line;
            } else if (unread.size() > longest) {
                m_begin += unread.size();
                isTooLong = true;
            }
        }
    }

private:
    static constexpr std::size_t longest = std::size_t{64} * 1024;

    /// Reads more behind what is unread; false at the end of the file.
    bool refill(std::string_view unread)
    {
        std::ranges::copy(unread, m_buffer.begin());
        const ssize_t count =
            ::read(m_file.get(), m_buffer.data() + unread.size(), m_buffer.size() - unread.size());
        m_begin = 0;
        m_end = unread.size() + static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        return count > 0;
    }

    const wire::descriptor &m_file;
    std::vector<char> m_buffer = std::vector<char>(4 * longest);
    /// The bytes that were read and not yet handed out.
    std::size_t m_begin = 0;
    std::size_t m_end = 0;
};

int sumOfFoundCounts(const runTable &table)
{
    std::int64_t sum = 0;
    for (const runRecord &record : table.records())
        sum += record.found;
    return toInt(sum);
}

void write(const runTable &table, QIODevice &file)
{
    dump("---- total statistics count", sumOfFoundCounts(table));
    file.write(QByteArray(wire::versionMark.data()) + "2\n");
    std::vector<char> storage;
    for (const runRecord &record : table.records()) {
        if (record.found <= 0)
            continue;
        const std::string_view line = wire::formatRecordLine(record, storage);
        file.write(line.data(), static_cast<qint64>(line.size()));
    }
}

/// Makes the user's folder where it is missing, and shuts it to others. False when it cannot be made, or is
/// somebody else's.
bool prepareFolder(const std::string &folder)
{
    const mode_t mask = umask(077);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    umask(mask);
    struct stat status;
    if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != geteuid())
        return false;
    return (status.st_mode & 077) == 0 || chmod(folder.c_str(), 0700) == 0;
}

/// Lets the names that have not been used for the longest time go, unless `path` is there or there is room
/// for it.
void makeRoomFor(const std::string &path)
{
    constexpr qsizetype mostNames = 256;
    const QFileInfo own(QFile::decodeName(path.c_str()));
    if (own.exists())
        return;
    const auto names = own.dir().entryInfoList({"*.txt"}, QDir::Files | QDir::Hidden, QDir::Time);
    for (qsizetype i = mostNames - 1; i < names.size(); ++i)
        QFile::remove(names[i].filePath());
}

} // namespace

bool statisticsPathFits(const char *identifier)
{
    return !machinesPath(firstDirectory, identifier).empty() &&
           !machinesPath(fallbackDirectory, identifier).empty();
}

wire::descriptor statisticsFile::openMachines(const char *identifier)
{
    for (const char *directory : {firstDirectory, fallbackDirectory}) {
        m_path = machinesPath(directory, identifier);
        if (trustedFile file = openTrusted(m_path.c_str(), O_RDONLY); file.descriptor)
            return std::move(file.descriptor);
    }
    return wire::descriptor();
}

std::vector<runRecord> statisticsFile::read(const wire::descriptor &file)
{
    std::vector<runRecord> records;
    wire::recordReader reader;
    const auto now = static_cast<unsigned>(std::time(nullptr));
    lineReader lines(file);
    runRecord record;
    while (records.size() < runTable::maxRecords) {
        const auto line = lines.next();
        if (!line)
            break;
        if (!reader.read(*line, record))
            continue;
        if (!reader.hasTimes())
            record.time = now;
        records.push_back(record);
    }
    return records;
}

statisticsFile::version statisticsFile::versionOf(const wire::descriptor &file)
{
    struct stat status;
    if (fstat(file.get(), &status) != 0)
        return {};
    return {status.st_ino, status.st_mtim.tv_sec * std::int64_t{1'000'000'000} + status.st_mtim.tv_nsec};
}

std::optional<std::vector<runRecord>> statisticsFile::load(const char *identifier, statisticsPlace place)
{
    m_identifier = identifier;
    m_place = place;
    wire::descriptor file;
    if (place == statisticsPlace::user) {
        const std::string path = wire::learnedPath(m_identifier);
        file = openTrusted(path.c_str(), O_RDONLY).descriptor;
        futimens(file.get(), nullptr); // the longest unused name goes first
        m_version = versionOf(file);
        if (!file)
            file = openMachines(identifier);
        m_path = path;
    } else {
        file = openMachines(identifier);
    }
    if (!file)
        return std::nullopt;
    return read(file);
}

wire::descriptor statisticsFile::lock()
{
    const std::string folder = wire::learnedFolder();
    if (!prepareFolder(folder)) {
        dump("---- the folder of learned runs cannot be had", errno);
        return wire::descriptor();
    }
    wire::descriptor file(open((folder + "/lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    for (int tries = 50; file && flock(file.get(), LOCK_EX | LOCK_NB) != 0; --tries) {
        if (tries > 0)
            QThread::msleep(10);
        else
            file.close();
    }
    if (!file)
        dump("---- the learned runs are locked", errno);
    return file;
}

std::optional<std::vector<runRecord>> statisticsFile::loadChanged()
{
    const wire::descriptor file = openTrusted(m_path.c_str(), O_RDONLY).descriptor;
    const version before = std::exchange(m_version, versionOf(file));
    return file && before != m_version ? std::optional(read(file)) : std::nullopt;
}

bool statisticsFile::save(const runTable &table, const char *identifier)
{
    if (identifier)
        dump("---- saving statistic data with entry count", table.count());
    else
        dump("---- saving intermediate data with entry count", table.count());
    if (m_identifier.empty() && !identifier)
        return false;
    const auto writeTable = [&table](QIODevice &file) { write(table, file); };
    if (m_place == statisticsPlace::user) {
        makeRoomFor(m_path);
        const bool isSaved = replaceTrusted(m_path.c_str(), onlyOwn, writeTable) == replacement::done;
        m_version = versionOf(openTrusted(m_path.c_str(), O_RDONLY).descriptor);
        return isSaved;
    }
    if (identifier)
        m_path = machinesPath(firstDirectory, identifier);
    replacement result = replaceTrusted(m_path.c_str(), othersRead, writeTable);
    if (result == replacement::impossible) {
        m_path = machinesPath(fallbackDirectory, identifier ? identifier : m_identifier.c_str());
        result = replaceTrusted(m_path.c_str(), othersRead, writeTable);
    }
    return result == replacement::done;
}
