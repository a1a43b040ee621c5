#include "app/standardError.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <string>

namespace
{

bool takesText()
{
    pollfd error{STDERR_FILENO, POLLOUT, 0};
    return poll(&error, 1, 0) == 1 && (error.revents & POLLOUT);
}

void replaceStandardError(const char *path, int flags)
{
    const int file = open(path, O_WRONLY | O_NOCTTY | O_CLOEXEC | flags);
    if (file < 0)
        return;
    dup2(file, STDERR_FILENO);
    close(file);
}

/// Libraries write to it without asking. The pipe is opened a second time, because not to wait is a property
/// of what was opened, which the starter shares.
void stopWaiting()
{
    struct stat about;
    if (fstat(STDERR_FILENO, &about) == 0 && S_ISFIFO(about.st_mode))
        replaceStandardError("/proc/self/fd/2", O_NONBLOCK);
    else if (!takesText())
        leaveStandardError();
}

} // namespace

void secureStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    int file;
    do
        file = open("/dev/null", O_RDWR | O_CLOEXEC);
    while (file >= 0 && file <= STDERR_FILENO);
    close(file);
    stopWaiting();
}

void complain(std::string_view text)
{
    std::string line = "progressd: ";
    line.append(text.substr(0, PIPE_BUF / 2)).append("\n");
    if (takesText()) [[maybe_unused]]
        const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

void leaveStandardError()
{
    replaceStandardError("/dev/null", 0);
}
