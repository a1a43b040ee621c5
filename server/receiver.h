#pragma once

#include "server/channel.h"
#include "server/channelTable.h"
#include "server/lifespan.h"
#include "server/messageBuffer.h"
#include "server/noticeBoxes.h"

#include <QObject>
#include <QPointer>

class handlers;

/// A server of the daemon on a TCP port: the command server, on which clients send messages, or the event
/// server, on which they receive events (and may send messages, too). It enters its channels into a table and
/// frames what arrives on any of them in one buffer. What messages do is the part of `handlers`.
class receiver : public QObject, public wayIn
{
public:
    enum class kind { command, event };

    /// Listens at once on all IPv4 addresses: on `portnum`, of which the low 16 bits count, or on a free port
    /// when it is below 2. `portnum` also says whether its clients can end the daemon, see `lifespan`.
    receiver(kind serves, int portnum, handlers &shared, lifespan &life);
    /// Closes the channels and stops listening.
    ~receiver() override;

    /// The port that the server listens on; 0 when it could not be bound.
    int getPort() const;
    presence clients() override;

private:
    void connection();
    bool awaitsRoom() const;
    void admit(wire::descriptor taken);
    void gotData(channel *client);
    void leave(channel *client);
    void shareListeners() const;

    bool dispatch();
    answerFunction nextAnswer();

    kind m_kind;
    int m_portnum;
    handlers &m_shared;
    lifespan &m_life;
    /// The listening socket, none when the port could not be bound.
    const wire::descriptor m_listening;
    acceptor m_acceptor;
    channelTable m_channels;
    /// What arrived and has not been handled yet, from all channels of this server.
    messageBuffer m_command;
    /// Made once, since few messages ask.
    const askerFunction m_answers = [this] { return nextAnswer(); };
    /// The channel that the text which waits came from; boxes are answered on it.
    QPointer<channel> m_client;
};
