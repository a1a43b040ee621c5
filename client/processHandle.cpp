#include "client/processHandle.h"

#include "client/waiting.h"

#include <cerrno>
#include <unistd.h>

// The C library's header forgets that it may be read as C++.
extern "C" {
#include <sys/pidfd.h>
}

processHandle::processHandle(pid_t process) : m_fd(process > 0 ? ::pidfd_open(process, 0) : -1) {}

processHandle::~processHandle()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool processHandle::signal(int number) const
{
    return m_fd < 0 || ::pidfd_send_signal(m_fd, number, nullptr, 0) == 0 || errno == ESRCH;
}

bool processHandle::waitForEnd(const deadline &until) const
{
    return m_fd < 0 || waitFor(m_fd, POLLIN, until);
}

bool processHandle::hasEnded() const
{
    return waitForEnd(deadline(std::chrono::milliseconds(0)));
}
