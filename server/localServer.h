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

    /// Takes in who connects to this socket from now on; nobody with -1, as until the first call.
    void listen(int listening) { m_acceptor.listen(listening); }
    presence clients() override;
    /// Closes the channels, when they have taken the last that they were told or had time to.
    void close();

private:
    /// Takes in the next who waits; false when nobody does.
    bool accept();

    handlers &m_shared;
    lifespan &m_life;
    acceptor m_acceptor;
    std::vector<localChannel *> m_channels;
};
