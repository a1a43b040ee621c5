#pragma once

#include "client/deadline.h"
#include "client/descriptor.h"

#include <sys/types.h>

/// A process that is not necessarily a child, held so that its number cannot come to mean another one.
class processHandle
{
public:
    /// Of a process that has ended already, or cannot be held, a handle that has ended.
    explicit processHandle(pid_t process);

    /// False when this user may not.
    bool signal(int number) const;
    /// Waits for its end; false when the time is up.
    bool waitForEnd(const deadline &until) const;
    bool hasEnded() const;
    /// For poll(2): readable when the process has ended; -1 for a process that had ended before.
    int fd() const { return m_fd.get(); }

private:
    descriptor m_fd;
};
