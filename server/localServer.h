#pragma once

#include "server/channel.h"
#include "server/lifespan.h"
#include "server/localSocket.h"

#include <vector>

class handlers;
class localChannel;

/// The way in for this user's own processes: the local socket and its channels, at most 64.
class localServer : public wayIn
{
public:
    localServer(handlers &shared, lifespan &life);
    ~localServer() { close(); }
    Q_DISABLE_COPY_MOVE(localServer)

    /// Opens the socket of `identifier`. Without it, all other operations do nothing.
    localSocket::outcome open(const char *identifier);
    /// What was in the way of `open()`.
    const std::string &reason() const { return m_socket.reason(); }
    presence clients() override;
    /// Removes the socket from the file system; the channels stay. A signal's handler may call it.
    void removeSocket();
    /// Tells the listeners of the end, removes the socket and closes the channels.
    void close();

private:
    /// Takes in the next who waits; false when nobody does.
    bool accept();
    void add(wire::descriptor taken);

    handlers &m_shared;
    lifespan &m_life;
    localSocket m_socket;
    acceptor m_acceptor;
    std::vector<localChannel *> m_channels;
};
