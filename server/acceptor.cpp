#include "server/acceptor.h"

#include "log/dump.h"

#include <QTimer>

#include <cerrno>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

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

acceptor::acceptor(int listening) : m_incoming(listening, QSocketNotifier::Read)
{
    connect(&m_incoming, &QSocketNotifier::activated, this, &acceptor::incoming);
}

int acceptor::next(sockaddr_in *peer)
{
    for (;;) {
        socklen_t size = sizeof *peer;
        const int descriptor =
            accept4(static_cast<int>(m_incoming.socket()), reinterpret_cast<sockaddr *>(peer),
                    peer ? &size : nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (descriptor >= 0) {
            if (leavesDescriptors(descriptor))
                return descriptor;
            ::close(descriptor);
        } else if (errno == EAGAIN) {
            return -1;
        } else if (errno != EINTR && errno != ECONNABORTED) {
            // Without a descriptor left, the connection that waits would call again and again.
            dump("---- cannot accept a connection, trying again, error", errno);
            m_incoming.setEnabled(false);
            QTimer::singleShot(acceptAgainMs, &m_incoming, [this] { m_incoming.setEnabled(true); });
            return -1;
        }
    }
}
