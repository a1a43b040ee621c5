// The content of a statistics file: loading it, matching a run against it, and that what was saved stays as
// it is when it is loaded and saved again.

#include "stats/statistics.h"
#include "log/dump.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

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

void load()
{
    statistics = {};
    statistics.load(identifier().c_str());
}

void followRun()
{
    statistics.startRun();
    for (const int elapsed : {0, 1, 2, 5, 90, 2147482, -3}) {
        statistics.setElapsed(elapsed);
        statistics.addSnapshot(elapsed % 1000);
        for (const estimateMode mode : {estimateMode::exact, estimateMode::adaptive}) {
            statistics.m_estimateMode = mode;
            statistics.advance(50, 0);
        }
    }
}

/// What the file holds after it was loaded and saved.
std::string saved()
{
    load();
    statistics.saveFinally(identifier().c_str());
    std::ifstream file(pathInMemory(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    setLog(nullptr);
    if (symlink(pathInMemory().c_str(), path().c_str()) != 0)
        std::abort();
    return std::atexit(removeFiles);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    std::ofstream(pathInMemory(), std::ios::binary)
        .write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    load();
    followRun();
    // A time stamp that fits no int is saved as it came and reads as 0, so that a second round settles
    // everything.
    statistics.saveFinally(identifier().c_str());
    if (const std::string settled = saved(); saved() != settled)
        std::abort();
    return 0;
}
