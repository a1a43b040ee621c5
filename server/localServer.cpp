#include "server/localServer.h"

#include "log/dump.h"
#include "server/descriptors.h"
#include "server/handlers.h"
#include "server/localChannel.h"

#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

constexpr size_t maxChannels = 64;

/// Only this user and root are served, by the kernel's word.
bool isTrusted(int descriptor)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           (peer.uid == geteuid() || peer.uid == 0);
}

} // namespace

localServer::localServer(handlers &shared, bool clientsMayEnd)
    : m_shared(shared), m_clientsMayEnd(clientsMayEnd), m_claims(shared)
{
}

localServer::~localServer()
{
    close();
}

localSocket::outcome localServer::open(const char *identifier)
{
    const localSocket::outcome result = m_socket.open(identifier);
    if (result == localSocket::outcome::listening) {
        m_incoming = std::make_unique<QSocketNotifier>(m_socket.descriptor(), QSocketNotifier::Read);
        connect(m_incoming.get(), &QSocketNotifier::activated, this, &localServer::accept);
    }
    return result;
}

/// One at a time: those who have come and gone meanwhile must not take the places of the others.
void localServer::accept()
{
    if (acceptOne() || errno == EAGAIN || errno == EINTR || errno == ECONNABORTED)
        return;
    // Without a descriptor left, the connection that waits would call again and again.
    dump("---- cannot accept a local connection, trying again, error", errno);
    m_incoming->setEnabled(false);
    QTimer::singleShot(acceptAgainMs, m_incoming.get(), [this] { m_incoming->setEnabled(true); });
}

bool localServer::acceptOne()
{
    const int descriptor = accept4(m_socket.descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (descriptor < 0)
        return false;
    if (m_channels.size() < maxChannels && leavesDescriptors(descriptor) && isTrusted(descriptor))
        add(descriptor);
    else
        ::close(descriptor);
    return true;
}

void localServer::add(int descriptor)
{
    auto *channel = new localChannel(descriptor, m_shared, m_claims, m_clientsMayEnd);
    m_channels.push_back(channel);
    connect(channel, &localChannel::exitRequested, this, &localServer::exitRequested);
    connect(channel, &localChannel::clientGone, this, &localServer::clientGone);
    connect(channel, &localChannel::finished, this, [this, channel] { remove(channel); });
}

void localServer::remove(localChannel *channel)
{
    m_channels.erase(std::find(m_channels.begin(), m_channels.end(), channel));
    channel->deleteLater();
}

bool localServer::hasClients() const
{
    return std::any_of(m_channels.begin(), m_channels.end(),
                       [](const localChannel *channel) { return channel->isClient(); });
}

bool localServer::mayGetClients()
{
    return acceptOne() ||
           std::any_of(m_channels.begin(), m_channels.end(), std::mem_fn(&localChannel::hasUnread));
}

void localServer::removeSocket()
{
    m_incoming.reset();
    m_socket.close();
}

void localServer::close()
{
    m_shared.m_listeners.sendLocal("shutDown");
    removeSocket();
    for (localChannel *channel : std::exchange(m_channels, {}))
        delete channel;
}
