#include "client/lockFile.h"

#include <charconv>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// Takes a port and its line feed off the front of `text`. A number without a line feed is still being
/// written.
std::optional<int> takePort(std::string_view &text)
{
    int port = -1;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (failure != std::errc{} || port < 0 || port > 65535 || end == text.data() + text.size() ||
        *end != '\n')
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()) + 1);
    return port;
}

std::string lockFilePath(const std::string &identifier)
{
    return "/tmp/HalvornRunning_" + identifier + ".lock";
}

} // namespace

std::optional<progressClient::ports> readLockFile(const std::string &identifier)
{
    // The folder is everybody's: a pipe in the file's place must not make us wait, a link not mislead us.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const int fd = ::open(lockFilePath(identifier).c_str(), flags);
    if (fd < 0)
        return std::nullopt;
    struct stat about {
    };
    char buffer[64];
    ssize_t size = -1;
    if (::fstat(fd, &about) == 0 && S_ISREG(about.st_mode) && about.st_uid == ::geteuid())
        size = ::read(fd, buffer, sizeof buffer);
    ::close(fd);
    if (size <= 0)
        return std::nullopt;

    std::string_view text(buffer, static_cast<std::size_t>(size));
    const auto command = takePort(text);
    const auto event = takePort(text);
    if (!command || !event)
        return std::nullopt;
    return progressClient::ports{*command, *event};
}

void removeLockFile(const std::string &identifier)
{
    ::unlink(lockFilePath(identifier).c_str());
}
