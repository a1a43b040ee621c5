#include "client/lockFile.h"

#include "client/descriptor.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

namespace
{

std::string lockFilePath(const std::string &identifier)
{
    return "/tmp/HalvornRunning_" + identifier + ".lock";
}

} // namespace

std::optional<progressClient::ports> readLockFile(const std::string &identifier)
{
    // The folder is everybody's: a pipe in the file's place must not make us wait, a link not mislead us.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const descriptor file(::open(lockFilePath(identifier).c_str(), flags));
    struct stat about = {};
    char text[64] = {};
    if (::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode) || about.st_uid != ::geteuid() ||
        ::read(file.get(), text, sizeof text - 1) <= 0)
        return std::nullopt;
    progressClient::ports found;
    // A number without a line feed is still being written.
    char end = '\0';
    const int fields = std::sscanf(text, "%5d %5d%c", &found.command, &found.event, &end);
    return fields == 3 && end == '\n' ? std::optional(found) : std::nullopt;
}

void removeLockFile(const std::string &identifier)
{
    ::unlink(lockFilePath(identifier).c_str());
}
