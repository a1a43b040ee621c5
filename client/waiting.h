#pragma once

#include "wire/system.h"

#include <algorithm>
#include <chrono>
#include <poll.h>
#include <string>
#include <sys/types.h>

/// How long is waited, and for what: descriptors and processes.

using wire::descriptor;

/// A point in time up to which a call may wait. A time-out that is negative, or of more than ten years, means
/// never: added to the clock it might go round.
class deadline
{
public:
    using clock = std::chrono::steady_clock;

    explicit deadline(std::chrono::milliseconds timeout)
        : m_never(timeout.count() < 0 || timeout > std::chrono::hours(10 * 365 * 24)),
          m_end(m_never ? clock::time_point::max() : clock::now() + timeout)
    {
    }

    /// For what is not waited for.
    static deadline now() { return deadline(std::chrono::milliseconds(0)); }
    static deadline earlier(const deadline &one, const deadline &other)
    {
        return one.m_end < other.m_end ? one : other;
    }

    bool isOver() const { return !m_never && clock::now() >= m_end; }

    /// What is left, in milliseconds rounded up, as poll(2) wants it: -1 for no limit.
    int leftForPoll() const
    {
        if (m_never)
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - clock::now()).count();
        return static_cast<int>(std::clamp<long long>(left, 0, 24 * 60 * 60 * 1000));
    }

private:
    bool m_never;
    clock::time_point m_end;
};

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

/// Waits until one of `events` (as for poll(2)), an error or a hang-up stands at `fd`; false when the time is
/// up.
bool waitFor(int fd, short events, const deadline &until);

/// `what`, then ": " and the text of errno.
std::string systemText(const std::string &what);
