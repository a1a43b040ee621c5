#include "client/waiting.h"

#include <cerrno>
#include <system_error>

// The C library's header forgets that it may be read as C++.
extern "C" {
#include <sys/pidfd.h>
}

processHandle::processHandle(pid_t process) : m_fd(process > 0 ? ::pidfd_open(process, 0) : -1) {}

bool processHandle::signal(int number) const
{
    return fd() < 0 || ::pidfd_send_signal(fd(), number, nullptr, 0) == 0 || errno == ESRCH;
}

bool processHandle::waitForEnd(const deadline &until) const
{
    return fd() < 0 || waitFor(fd(), POLLIN, until);
}

bool processHandle::hasEnded() const
{
    return waitForEnd(deadline::now());
}

bool waitFor(int fd, short events, const deadline &until)
{
    pollfd waiting{fd, events, 0};
    for (;;) {
        const int left = until.leftForPoll();
        if (::poll(&waiting, 1, left) > 0)
            return true;
        if (left == 0 || (left > 0 && until.isOver()))
            return false;
    }
}

std::string systemText(const std::string &what)
{
    return what + ": " + std::generic_category().message(errno);
}
