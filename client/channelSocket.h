#pragma once

#include "client/deadline.h"

#include <cstddef>
#include <string_view>

/// One TCP connection to a daemon on this machine. Non-blocking underneath; each call waits up to its
/// deadline. Throws `progressClient::error`.
class channelSocket
{
public:
    channelSocket() = default;
    channelSocket(channelSocket &&other) noexcept;
    channelSocket &operator=(channelSocket &&other) noexcept;
    ~channelSocket();

    static channelSocket connect(int port, const deadline &until);

    bool isOpen() const { return m_fd >= 0; }
    int fd() const { return m_fd; }

    void send(std::string_view bytes, const deadline &until);
    /// Waits for at least one byte and takes at most `size`; 0 when the time is up. The daemon's hanging up
    /// is an error (gone).
    std::size_t receive(char *buffer, std::size_t size, const deadline &until);
    /// Ends the sending direction and waits until the daemon, having read everything, has closed the other.
    void finish(const deadline &until);
    void close();

private:
    explicit channelSocket(int fd) : m_fd(fd) {}
    bool hasHungUp() const;

    int m_fd = -1;
};
