#pragma once

#include "server/channel.h"
#include "server/lifespan.h"

#include <vector>

class handlers;
class localChannel;

/// The way in for this user's own processes: the channels of the local socket, at most 64.
class localServer : public wayIn
{
public:
    localServer(handlers &shared, lifespan &life);
    ~localServer() { close(); }
    Q_DISABLE_COPY_MOVE(localServer)

    /// Takes in who connects to this socket, see `acceptor`; until then nobody comes.
    void listen(int listening) { m_acceptor.listen(listening); }
    presence clients() override;
    /// Takes nobody in any more, tells the listeners of the end and closes the channels.
    void close();

private:
    /// Takes in the next who waits; false when nobody does.
    bool accept();

    handlers &m_shared;
    lifespan &m_life;
    acceptor m_acceptor;
    std::vector<localChannel *> m_channels;
};
