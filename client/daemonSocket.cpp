#include "client/daemonSocket.h"

#include "wire/places.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace
{

using error = progressError;

/// Of what comes after the last word to the daemon, in bytes.
constexpr std::size_t mostHeard = 1024 * 1024;

[[noreturn]] void throwNotRunning(const std::string &identifier, const std::string &path)
{
    throw error(error::reason::notRunning, "no daemon \"" + identifier +
                                               "\" is running, or it is one without a local channel (" +
                                               systemText(path) + ')');
}

void checkSocketFile(const std::string &identifier, const std::string &path)
{
    struct stat about = {};
    if (::lstat(path.c_str(), &about) != 0)
        throwNotRunning(identifier, path);
    if (!S_ISSOCK(about.st_mode) || about.st_uid != ::geteuid())
        throw error(error::reason::notOurs, path + " is no socket of this user");
}

/// connect(2) waits as long as sending may, while the queue in front of a daemon that does not get on is
/// full.
void limitConnecting(int fd, const deadline &until)
{
    timeval limit{};
    if (const int left = until.leftForPoll(); left >= 0) {
        limit.tv_sec = left / 1000;
        limit.tv_usec = std::max(left % 1000, 1) * 1000;
    }
    ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

} // namespace

std::string socketPathOf(const std::string &identifier)
{
    const auto path = wire::socketPath(wire::socketFolder(), identifier);
    if (!path)
        throw error(error::reason::badArgument,
                    "an identifier is a part of a file name: not empty, without \"/\"");
    // What would fit into the usual folder, /run/user/UID/progressd, is no fault of the caller's.
    constexpr std::size_t longestUsual = 70;
    if (!wire::fitsSocket(*path))
        throw error(identifier.size() > longestUsual ? error::reason::badArgument : error::reason::system,
                    *path + " is too long for a socket");
    return *path;
}

std::string checkedSocketFolder()
{
    std::string folder = wire::socketFolder();
    if (const std::string fault = wire::faultOfSocketFolder(folder); !fault.empty())
        throw error(error::reason::notOurs, fault + "; it has to be this user's alone");
    return folder;
}

void throwTimedOut(const char *what)
{
    throw error(error::reason::timedOut, std::string("the daemon does not ") + what + " in time");
}

void throwGone()
{
    throw error(error::reason::gone, "the daemon has hung up (it ended, or has no room for another client)");
}

daemonSocket daemonSocket::connect(const std::string &identifier, const deadline &until)
{
    const std::string path = socketPathOf(identifier);
    checkedSocketFolder();
    checkSocketFile(identifier, path);
    daemonSocket made(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (made.fd() < 0)
        throw error(error::reason::system, systemText("no socket"));

    const sockaddr_un address = wire::socketAddress(path);
    const auto connects = [&made, &address, &until] {
        limitConnecting(made.fd(), until);
        return ::connect(made.fd(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    };
    while (!connects()) {
        if (errno == EAGAIN)
            throwTimedOut("take the connection");
        if (errno != EINTR)
            throwNotRunning(identifier, path);
    }
    if (!wire::isTrusted(wire::peerOf(made.fd())))
        throw error(error::reason::notOurs, "somebody else answers at " + path);
    ::fcntl(made.fd(), F_SETFL, O_NONBLOCK);
    return made;
}

std::optional<daemonSocket> daemonSocket::find(const std::string &identifier, const deadline &until)
{
    try {
        return connect(identifier, until);
    } catch (const error &problem) {
        if (problem.why() != error::reason::notRunning)
            throw;
        return std::nullopt;
    }
}

pid_t daemonSocket::daemonProcess() const
{
    return wire::peerOf(fd()).pid;
}

std::size_t daemonSocket::send(std::string_view bytes, const deadline &until)
{
    std::size_t all = 0;
    while (all < bytes.size()) {
        const ssize_t sent = ::send(fd(), bytes.data() + all, bytes.size() - all, MSG_NOSIGNAL);
        if (sent >= 0)
            all += static_cast<std::size_t>(sent);
        else if (errno == EAGAIN) {
            if (!waitFor(fd(), POLLOUT, until))
                break;
        } else if (errno != EINTR)
            throwGone();
    }
    return all;
}

std::optional<std::size_t> daemonSocket::receive(char *buffer, std::size_t size, const deadline &until)
{
    for (;;) {
        const ssize_t got = ::recv(fd(), buffer, size, 0);
        if (got >= 0)
            return static_cast<std::size_t>(got);
        if (errno != EAGAIN && errno != EINTR)
            throwGone();
        if (errno == EAGAIN && !waitFor(fd(), POLLIN, until))
            return std::nullopt;
    }
}

std::string daemonSocket::finish(const deadline &until)
{
    ::shutdown(fd(), SHUT_WR);
    std::string heard;
    char buffer[4096];
    while (const auto got = receive(buffer, sizeof buffer, until)) {
        if (*got == 0)
            return heard;
        if (heard.size() < mostHeard)
            heard.append(buffer, *got);
    }
    throwTimedOut("answer");
}

void daemonSocket::abort()
{
    ::shutdown(fd(), SHUT_RDWR);
}
