#pragma once

#include "client/progressError.h"
#include "client/waiting.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// One connection to the local socket of a daemon of this user. Non-blocking underneath; each call waits up
/// to its deadline. Throws `progressError`.
class daemonSocket
{
public:
    /// Believes only a socket of this user, in a folder of this user, that this user (or root) answers on.
    static daemonSocket connect(const std::string &identifier, const deadline &until);
    /// The same; none where nobody answers. A daemon need not be awake to answer.
    static std::optional<daemonSocket> find(const std::string &identifier, const deadline &until);

    int fd() const { return m_fd.get(); }
    /// By the kernel's word; 0 for one that this process cannot see.
    pid_t daemonProcess() const;

    /// Gives how many bytes were sent: fewer than all when the time was up.
    std::size_t send(std::string_view bytes, const deadline &until);
    /// Waits for at least one byte and takes at most `size`. None when the time is up, 0 when the daemon has
    /// hung up after it has read everything; else its hanging up is an error (gone).
    std::optional<std::size_t> receive(char *buffer, std::size_t size, const deadline &until);
    /// Ends the sending direction and waits until the daemon has handled everything and has hung up. Gives
    /// what it still said. After an error (timedOut) it can be called again.
    std::string finish(const deadline &until);
    /// Hangs up in both directions, whoever else holds the connection.
    void abort();

private:
    explicit daemonSocket(int fd) : m_fd(fd) {}

    descriptor m_fd;
};

/// IDENTIFIER.sock in this user's folder. An error: badArgument for an identifier that can have none, system
/// where the folder's path is too long for a socket.
std::string socketPathOf(const std::string &identifier);

/// This user's folder of sockets. An error (notOurs) unless it is closed to others; one that is missing is
/// fine.
std::string checkedSocketFolder();

[[noreturn]] void throwGone();
[[noreturn]] void throwTimedOut(const char *what);
