#pragma once

#include "server/eventListeners.h"
#include "server/messageStream.h"
#include "server/noticeBoxes.h"

#include <QObject>
#include <QSocketNotifier>

#include <chrono>

class claimedSlots;
class handlers;

/// One client on the local socket: its messages, each in its turn, its answers and, if it listens, its
/// events. It is over when the client has ended its sending direction and all complete messages have been
/// handled, and closes when the client has taken what it was told until then; whoever made it deletes it
/// then.
class localChannel : public QObject, public eventListener
{
    Q_OBJECT

public:
    /// Takes over `descriptor`, a connected stream socket that does not block.
    localChannel(int descriptor, handlers &shared, claimedSlots &claims, bool mayEndDaemon);
    /// Gives the client a moment to take what still waits for it, then closes.
    ~localChannel() override;

    /// The client has sent a complete message that asks for more than to listen, and may send others.
    bool isClient() const { return m_isClient && !m_isOver; }
    /// The client has sent something that was not looked at yet.
    bool hasUnread() const;

    qint64 waiting() const override { return m_outgoing.size() - m_sent; }
    void write(QByteArrayView bytes) override;
    void flush() override;

signals:
    /// It was a client, and is no more.
    void clientGone();
    /// Nothing more comes of this channel, and nothing more goes to it.
    void finished();
    /// The client, which may end the daemon, wants it to end. The messages behind this are not handled.
    void exitRequested();

private:
    using clock = std::chrono::steady_clock;

    void takeTurn();
    bool receive();
    bool handleMessages(clock::time_point end);
    void handle(const message &received);
    void requestExit();
    /// Bytes that the client waits for: they are not left out, but may end a channel that never reads.
    void reply(const QByteArray &bytes);
    answerFunction nextAnswer();
    /// Ends the client's part.
    void finish();
    /// Does not wait for a client that does not read.
    void cutOff();

    int m_descriptor;
    handlers &m_shared;
    claimedSlots &m_claims;
    bool m_mayEndDaemon;
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
    messageStream m_incoming;
    QByteArray m_outgoing;
    /// How much of `m_outgoing` has been taken.
    qsizetype m_sent = 0;
    /// Boxes that this channel has asked for.
    int m_boxCount = 0;
    bool m_isClient = false;
    bool m_listens = false;
    /// The client sends no more.
    bool m_ended = false;
    /// The client takes no more.
    bool m_deaf = false;
    /// Nothing that the client may still send counts.
    bool m_isOver = false;
    bool m_finished = false;
    /// The daemon is about to end.
    bool m_stopped = false;
};
