// The content of a statistics file: loading it, matching a run against it, and that what is saved reads back
// as it was.

#include "stats/estimate.h"
#include "stats/findNearest.h"
#include "stats/runTable.h"
#include "stats/snapshots.h"
#include "stats/statisticsFile.h"

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

std::string identifier()
{
    static const std::string own = "fuzz" + std::to_string(getpid());
    return own;
}

std::string path()
{
    return "/var/tmp/currentTimestamps_" + identifier() + ".txt";
}

/// Where the file really lies: in memory, or the disk would be what is tested. A save keeps links.
std::string pathInMemory()
{
    return "/dev/shm/" + identifier();
}

void removeFiles()
{
    std::remove(path().c_str());
    std::remove(pathInMemory().c_str());
}

void writeFile(const std::uint8_t *data, std::size_t size)
{
    const int file = open(pathInMemory().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0 || write(file, data, size) != static_cast<ssize_t>(size))
        std::abort();
    close(file);
}

void load()
{
    for (int record = 0; record < m_snapshotcount; ++record)
        setRecordData(record, {});
    m_snapshotcount = 0;
    loadStatistics(identifier().c_str());
}

void followRun()
{
    clearSnapshots();
    resetEstimate();
    startEstimate();
    for (const int elapsed : {0, 1, 2, 5, 90, 2147482, -3}) {
        holdEstimate(elapsed);
        addSnapshot(elapsed % 1000);
        advanceEstimate(elapsed, 50, 0);
    }
}

struct record {
    unsigned time;
    int total;
    int found;
    std::vector<int> snapshots;
    bool operator==(const record &) const = default;
};

/// A time stamp that fits no int reads as 0.
unsigned readBack(unsigned time)
{
    return time > INT_MAX ? 0 : time;
}

/// The records that a save keeps.
std::vector<record> keptRecords()
{
    std::vector<record> kept;
    for (int i = 0; i < m_snapshotcount; ++i) {
        if (m_snapshotfound[i] <= 0)
            continue;
        const int *const data = m_snapshotdata[i].get();
        const auto time = static_cast<unsigned>(m_snapshottime[i].toSecsSinceEpoch());
        kept.push_back({readBack(time), m_snapshottotal[i], m_snapshotfound[i],
                        std::vector<int>(data, data + m_snapshottlen[i])});
    }
    return kept;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    if (symlink(pathInMemory().c_str(), path().c_str()) != 0)
        std::abort();
    return std::atexit(removeFiles);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    writeFile(data, size);
    load();
    followRun();
    const std::vector<record> before = keptRecords();
    saveStatistics(identifier().c_str());
    load();
    if (keptRecords() != before)
        std::abort();
    return 0;
}
