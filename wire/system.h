#pragma once

#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

/// What both ends ask of the system in the same way.
namespace wire
{

/// Owns a file descriptor; -1 for none.
class descriptor
{
public:
    explicit descriptor(int fd = -1) : m_fd(fd) {}
    descriptor(descriptor &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    descriptor &operator=(descriptor &&other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~descriptor() { close(); }

    explicit operator bool() const { return m_fd >= 0; }
    int get() const { return m_fd; }
    void close()
    {
        if (m_fd >= 0)
            ::close(std::exchange(m_fd, -1));
    }

private:
    int m_fd;
};

/// The path is cut to what fits, see `fitsSocket()`.
inline sockaddr_un socketAddress(const std::string &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

/// Who is at the other end of a local connection, by the kernel's word; nobody's number where it does not
/// say.
inline ucred peerOf(int fd)
{
    ucred peer{0, static_cast<uid_t>(-1), 0};
    socklen_t size = sizeof peer;
    ::getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size);
    return peer;
}

/// Neither end has to do with others than this user and root.
inline bool isTrusted(const ucred &peer)
{
    return peer.uid == ::geteuid() || peer.uid == 0;
}

} // namespace wire
