#pragma once

#include "server/claimedSlots.h"
#include "server/localSocket.h"

#include <QObject>
#include <QSocketNotifier>

#include <memory>
#include <vector>

class handlers;
class localChannel;

/// The way in for this user's own processes: the local socket and its channels, at most 64.
class localServer : public QObject
{
    Q_OBJECT

public:
    /// Whether clients may end the daemon holds for all channels.
    localServer(handlers &shared, bool clientsMayEnd);
    ~localServer() override;

    /// Opens the socket of `identifier`. Without it, all other operations do nothing.
    localSocket::outcome open(const char *identifier);
    /// What was in the way of `open()`.
    const std::string &reason() const { return m_socket.reason(); }
    /// Whether a client that asked for more than to listen is there.
    bool hasClients() const;
    /// Whether somebody has sent what was not looked at yet. Takes in who waits to be accepted.
    bool mayGetClients();
    /// Removes the socket from the file system; the channels stay.
    void removeSocket();
    /// Tells the listeners of the end, removes the socket and closes the channels.
    void close();

signals:
    /// A client has gone.
    void clientGone();
    void exitRequested();

private:
    void accept();
    bool acceptOne();
    void add(int descriptor);
    void remove(localChannel *channel);

    handlers &m_shared;
    bool m_clientsMayEnd;
    claimedSlots m_claims;
    localSocket m_socket;
    std::unique_ptr<QSocketNotifier> m_incoming;
    std::vector<localChannel *> m_channels;
};
