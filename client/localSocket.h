#pragma once

#include "client/deadline.h"
#include "client/descriptor.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

/// One connection to the local socket of a daemon of this user. Non-blocking underneath; each call waits up
/// to its deadline. Throws `progressClient::error`.
class localSocket
{
public:
    /// Believes only a socket of this user, in a folder of this user, that this user (or root) answers on.
    static localSocket connect(const std::string &identifier, const deadline &until);

    int fd() const { return m_fd.get(); }
    /// By the kernel's word; 0 for one that this process cannot see.
    pid_t daemonProcess() const;

    void send(std::string_view bytes, const deadline &until);
    /// Waits for at least one byte and takes at most `size`. None when the time is up, 0 when the daemon has
    /// hung up after it has read everything; else its hanging up is an error (gone).
    std::optional<std::size_t> receive(char *buffer, std::size_t size, const deadline &until);
    /// Ends the sending direction and waits until the daemon, having handled everything, has hung up. Gives
    /// what it still said.
    std::string finish(const deadline &until);

private:
    explicit localSocket(int fd) : m_fd(fd) {}

    descriptor m_fd;
};

/// Whether somebody answers there, awake or not.
bool answers(const std::string &identifier, const deadline &until);

[[noreturn]] void throwGone();
