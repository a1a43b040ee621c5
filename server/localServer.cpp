#include "server/localServer.h"

#include "server/handlers.h"
#include "server/localChannel.h"

#include <algorithm>
#include <functional>
#include <utility>

localServer::localServer(handlers &shared, lifespan &life) : m_shared(shared), m_life(life)
{
    m_life.watch(*this);
    // One at a time: those who have come and gone meanwhile must not take the places of the others.
    QObject::connect(&m_acceptor, &acceptor::activated, [this] { accept(); });
}

bool localServer::accept()
{
    constexpr size_t maxChannels = 64;
    wire::descriptor taken = m_acceptor.next();
    if (!taken)
        return false;
    if (m_channels.size() >= maxChannels || !wire::isTrusted(wire::peerOf(taken.get())))
        return true;
    auto *client = new localChannel(std::move(taken), m_shared, m_life);
    m_channels.push_back(client);
    QObject::connect(client, &channel::finished, client, [this, client] {
        std::erase(m_channels, client);
        client->deleteLater();
    });
    return true;
}

wayIn::presence localServer::clients()
{
    if (std::any_of(m_channels.begin(), m_channels.end(), std::mem_fn(&localChannel::isClient)))
        return presence::client;
    const bool isUncertain = accept() || std::any_of(m_channels.begin(), m_channels.end(),
                                                     std::mem_fn(&localChannel::mayBecomeClient));
    return isUncertain ? presence::uncertain : presence::none;
}

void localServer::close()
{
    for (localChannel *client : std::exchange(m_channels, {}))
        delete client;
}
