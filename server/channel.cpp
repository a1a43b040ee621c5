#include "server/channel.h"

#include "log/dump.h"

#include <QDeadlineTimer>
#include <QTimer>

#include <cerrno>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <utility>

namespace
{

/// Milliseconds that clients still have to take the last that they are told, at the daemon's end. All of them
/// together have two seconds from the first call on: one that never reads must not hold up the end, and a cut
/// event is worse than a late end.
int lastPatienceMs()
{
    constexpr int patienceMs = 2000;
    static const QDeadlineTimer deadline(patienceMs);
    return static_cast<int>(deadline.remainingTime());
}

/// File descriptors that clients leave to the display, the log and the statistics. Without any, the display
/// library loses its connection while a window is painted, and waits for it for ever.
constexpr rlim_t keptDescriptors = 8;
constexpr int acceptAgainMs = 500;

/// Whether a channel on `descriptor` leaves enough of them; descriptors are numbered from the lowest on.
bool leavesDescriptors(int descriptor)
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    return static_cast<rlim_t>(descriptor) + keptDescriptors < limit.rlim_cur;
}

} // namespace

channel::channel(wire::descriptor taken)
    : m_descriptor(std::move(taken)), m_readable(m_descriptor.get(), QSocketNotifier::Read),
      m_writable(m_descriptor.get(), QSocketNotifier::Write)
{
    m_writable.setEnabled(false);
    connect(&m_readable, &QSocketNotifier::activated, this, &channel::readable);
    connect(&m_writable, &QSocketNotifier::activated, this, &channel::flush);
}

channel::~channel()
{
    pollfd room{m_descriptor.get(), POLLOUT, 0};
    for (int ready = 1; mustWait() && ready != 0;) {
        ready = poll(&room, 1, lastPatienceMs()); // a signal that asks for the end again interrupts it
        send();
    }
}

qsizetype channel::receive(char *room)
{
    const ssize_t size = recv(m_descriptor.get(), room, readSize, 0);
    m_ended = size == 0 || (size < 0 && errno != EAGAIN && errno != EINTR);
    return std::max<ssize_t>(size, 0);
}

bool channel::hasUnread() const
{
    int bytes = 0;
    return !m_isFinishing && ioctl(m_descriptor.get(), FIONREAD, &bytes) == 0 && bytes > 0;
}

bool channel::isLeaving() const
{
    pollfd about{m_descriptor.get(), POLLRDHUP, 0};
    return !m_isFinishing && poll(&about, 1, 0) > 0;
}

bool channel::isHungUp() const
{
    pollfd about{m_descriptor.get(), 0, 0};
    return poll(&about, 1, 0) > 0 && (about.revents & POLLHUP);
}

void channel::write(QByteArrayView bytes)
{
    if (!m_deaf)
        m_outgoing.append(bytes);
    flush();
}

void channel::flush()
{
    send();
    m_writable.setEnabled(mustWait());
    if (m_isFinishing && !mustWait() && !std::exchange(m_isFinished, true))
        QMetaObject::invokeMethod(this, &channel::finished, Qt::QueuedConnection);
}

void channel::send()
{
    while (mustWait()) {
        const std::string_view rest = m_outgoing.view();
        const ssize_t sent =
            ::send(m_descriptor.get(), rest.data(), rest.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0) {
            // What the client has sent is still to be read, so this does not end the channel.
            m_deaf = errno != EAGAIN && errno != EINTR;
            break;
        }
        m_outgoing.drop(static_cast<size_t>(sent));
    }
}

void channel::finish()
{
    m_isFinishing = true;
    setReading(false);
    flush();
}

void channel::cutOff()
{
    m_deaf = true;
    finish();
}

void acceptor::listen(int listening)
{
    setSocket(listening);
    setEnabled(true);
}

wire::descriptor acceptor::next(sockaddr_in *peer)
{
    while (isValid()) {
        socklen_t size = sizeof *peer;
        wire::descriptor taken(accept4(static_cast<int>(socket()), reinterpret_cast<sockaddr *>(peer),
                                       peer ? &size : nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (taken && leavesDescriptors(taken.get()))
            return taken;
        if (taken || errno == EINTR || errno == ECONNABORTED)
            continue;
        if (errno != EAGAIN) {
            // Without a descriptor left, the connection that waits would call again and again.
            dump("---- cannot accept a connection, trying again, error", errno);
            setEnabled(false);
            QTimer::singleShot(acceptAgainMs, this, [this] { setEnabled(true); });
        }
        return taken;
    }
    return wire::descriptor();
}
