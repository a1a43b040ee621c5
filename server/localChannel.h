#pragma once

#include "server/channel.h"
#include "server/messageStream.h"
#include "server/noticeBoxes.h"

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

class handlers;
class lifespan;

/// One client on the local socket: its messages, each in its turn, its answers and, if it listens, its
/// events. It is over when the client has ended its sending direction and all complete messages have been
/// handled, and finishes when the client has taken what it was told until then.
class localChannel : public channel
{
public:
    localChannel(wire::descriptor taken, handlers &shared, lifespan &life);
    ~localChannel() override;

    /// The client has sent a complete message that asks for more than to listen, and may send others.
    bool isClient() const { return m_isClient && !m_isOver && !m_isAbandoned; }
    /// The client has sent something that was not looked at yet.
    bool mayBecomeClient() const { return !m_isAbandoned && hasUnread(); }

private:
    using clock = std::chrono::steady_clock;

    void takeTurn();
    bool handleMessages(clock::time_point end);
    void handle(const message &received);
    void claim();
    /// Bytes that the client waits for: they are not left out, but may end a channel that never reads.
    void reply(QByteArrayView bytes);
    answerFunction nextAnswer();
    void noticeAbsence();
    /// Ends the client's part.
    void endClient();

    handlers &m_shared;
    lifespan &m_life;
    messageStream m_incoming;
    /// Made once, since few messages ask.
    const askerFunction m_answers = [this] { return nextAnswer(); };
    std::vector<int> m_claimed;
    /// Lives as long as somebody waits for answers.
    std::unique_ptr<QObject> m_asker;
    /// Boxes that this channel has asked for.
    int m_boxCount = 0;
    bool m_isClient = false;
    /// Nothing that the client may still send counts.
    bool m_isOver = false;
    /// The daemon is about to end.
    bool m_stopped = false;
    /// The client has gone so long ago that what it has left behind keeps no daemon.
    bool m_isAbandoned = false;
    std::optional<clock::time_point> m_hungUpAt;
};
