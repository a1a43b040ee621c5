#include "client/lockFile.h"

#include "client/descriptor.h"
#include "wire/places.h"

#include <fcntl.h>
#include <sys/stat.h>

std::optional<progressClient::ports> readLockFile(const std::string &identifier)
{
    // The folder is everybody's: a pipe in the file's place must not make us wait, a link not mislead us.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const descriptor file(::open(wire::lockFilePath(identifier).c_str(), flags));
    struct stat about = {};
    char text[64] = {};
    if (::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode) || about.st_uid != ::geteuid() ||
        ::read(file.get(), text, sizeof text - 1) <= 0)
        return std::nullopt;
    const auto found = wire::portsFromText(text);
    if (!found)
        return std::nullopt;
    return progressClient::ports{found->command, found->event};
}

void removeLockFile(const std::string &identifier)
{
    ::unlink(wire::lockFilePath(identifier).c_str());
}
