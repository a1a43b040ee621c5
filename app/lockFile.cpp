#include "app/lockFile.h"

#include "log/dump.h"
#include "wire/places.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>

namespace
{

enum class place { free, blocked, foreign };

/// Takes away the file that a crash, or another daemon of this name, has left.
place clearPlace(const std::string &path)
{
    struct stat about;
    if (lstat(path.c_str(), &about) != 0)
        return place::free;
    if (S_ISDIR(about.st_mode))
        return place::blocked;
    if (!S_ISREG(about.st_mode))
        return place::foreign;
    const bool isOurs = about.st_uid == geteuid();
    if (unlink(path.c_str()) != 0 && errno != ENOENT)
        return isOurs ? place::blocked : place::foreign;
    if (!isOurs)
        dump("---- removed a lock file of another user's, number", static_cast<int>(about.st_uid));
    return place::free;
}

/// The folder is everybody's. O_EXCL opens nothing, and follows no link, that somebody has just put there.
int newFile(const std::string &path)
{
    constexpr mode_t onlyOwnerMayWrite = 0644;
    return open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, onlyOwnerMayWrite);
}

} // namespace

lockFile::lockFile(const char *identifier) : m_path(wire::lockFilePath(identifier)) {}

bool lockFile::fits() const
{
    return m_path.size() < PATH_MAX;
}

bool lockFile::write(int commandPort, int eventPort) const
{
    // Another daemon of this name may be writing its own at the same moment.
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const place state = clearPlace(m_path);
        if (state != place::free)
            return state != place::foreign;
        const int file = newFile(m_path);
        if (file >= 0) {
            dprintf(file, "%s", wire::lockFileText({commandPort, eventPort}).c_str());
            close(file);
            return true;
        }
        if (errno != EEXIST)
            return true;
    }
    return false;
}

void lockFile::remove() const
{
    unlink(m_path.c_str());
}
