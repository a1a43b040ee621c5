#include "client/channelSocket.h"

#include "client/progressClient.h"
#include "client/waiting.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace
{

using error = progressClient::error;

constexpr char hungUp[] = "the daemon has hung up (it ended, or has no room for another client)";

[[noreturn]] void throwGone()
{
    throw error(error::reason::gone, hungUp);
}

[[noreturn]] void throwTimedOut(const char *what)
{
    throw error(error::reason::timedOut, std::string("the daemon does not ") + what + " in time");
}

int pendingError(int fd)
{
    int code = 0;
    socklen_t size = sizeof code;
    getsockopt(fd, SOL_SOCKET, SO_ERROR, &code, &size);
    return code;
}

/// After both ends have said that they are done: waits until it is known how the other one took what was sent
/// last.
void waitForClosed(int fd, const deadline &until)
{
    constexpr std::chrono::microseconds lookInterval{50};
    tcp_info info{};
    socklen_t size = sizeof info;
    while (getsockopt(fd, IPPROTO_TCP, TCP_INFO, &info, &size) == 0 && info.tcpi_state != TCP_CLOSE) {
        if (until.isOver())
            throwTimedOut("take what was sent");
        std::this_thread::sleep_for(lookInterval);
    }
}

} // namespace

channelSocket::channelSocket(channelSocket &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}

channelSocket &channelSocket::operator=(channelSocket &&other) noexcept
{
    std::swap(m_fd, other.m_fd);
    return *this;
}

channelSocket::~channelSocket()
{
    close();
}

void channelSocket::close()
{
    if (m_fd >= 0)
        ::close(std::exchange(m_fd, -1));
}

channelSocket channelSocket::connect(int port, const deadline &until)
{
    channelSocket made(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!made.isOpen())
        throw error(error::reason::system, systemText("no socket"));
    const int on = 1;
    setsockopt(made.m_fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);

    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(made.m_fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
        return made;
    if (errno == EINPROGRESS) {
        if (!waitFor(made.m_fd, POLLOUT, until))
            throwTimedOut("take the connection");
        errno = pendingError(made.m_fd);
        if (errno == 0)
            return made;
    }
    throw error(error::reason::notRunning,
                systemText("no connection to port " + std::to_string(port)) + " (a stale lock file?)");
}

bool channelSocket::hasHungUp() const
{
    char byte;
    const ssize_t got = ::recv(m_fd, &byte, 1, MSG_PEEK | MSG_DONTWAIT);
    return got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR);
}

void channelSocket::send(std::string_view bytes, const deadline &until)
{
    if (hasHungUp())
        throwGone();
    while (!bytes.empty()) {
        const ssize_t sent = ::send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        else if (errno == EAGAIN) {
            if (!waitFor(m_fd, POLLOUT, until))
                throwTimedOut("take the message");
        } else if (errno != EINTR)
            throwGone();
    }
}

std::size_t channelSocket::receive(char *buffer, std::size_t size, const deadline &until)
{
    for (;;) {
        const ssize_t got = ::recv(m_fd, buffer, size, 0);
        if (got > 0)
            return static_cast<std::size_t>(got);
        if (got == 0 || (errno != EAGAIN && errno != EINTR))
            throwGone();
        if (errno == EAGAIN && !waitFor(m_fd, POLLIN, until))
            return 0;
    }
}

void channelSocket::finish(const deadline &until)
{
    ::shutdown(m_fd, SHUT_WR);
    char unwanted[256];
    for (;;) {
        const ssize_t got = ::recv(m_fd, unwanted, sizeof unwanted, 0);
        if (got == 0)
            break;
        if (got < 0 && errno != EAGAIN && errno != EINTR)
            throwGone();
        if (got < 0 && errno == EAGAIN && !waitFor(m_fd, POLLIN, until))
            throwTimedOut("read what was sent");
    }
    // A daemon that hangs up before it has read everything resets the connection; behind an end that was
    // already there, the reset comes later and is found only here.
    waitForClosed(m_fd, until);
    if (pendingError(m_fd) != 0)
        throwGone();
    close();
}
