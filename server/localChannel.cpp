#include "server/localChannel.h"

#include "log/dump.h"
#include "server/handlers.h"
#include "server/lifespan.h"

#include <QPointer>

#include <utility>

namespace
{

using namespace std::chrono_literals;

/// For so long the messages of one channel are handled; then the others, the ticks and the painting have
/// their turn.
constexpr auto turn = 20ms;
/// The clock is looked at after so many messages.
constexpr int messagesPerLook = 16;
/// For so long what a client has left behind when it went keeps a daemon that all others have left.
constexpr auto longestEstate = 1s;

} // namespace

localChannel::localChannel(wire::descriptor taken, handlers &shared, lifespan &life)
    : channel(std::move(taken)), m_shared(shared), m_life(life), m_asker(std::make_unique<QObject>())
{
    connect(this, &channel::readable, this, &localChannel::takeTurn);
}

localChannel::~localChannel()
{
    m_isOver = true;
    m_shared.m_listeners.removeLocal(this);
}

/// Nothing more is read before all that is complete has been handled.
void localChannel::takeTurn()
{
    if (m_isOver || m_stopped)
        return;
    const eventListeners::batch batch(m_shared.m_listeners);
    const auto end = clock::now() + turn;
    bool complete = handleMessages(end);
    for (bool more = true; more && complete && !m_incoming.isTooLong() && clock::now() < end;) {
        const qsizetype size = receive(m_incoming.reserve(readSize));
        m_incoming.commit(size);
        // More has probably come; the way through the event loop would cost as much as the reading.
        more = size == readSize;
        complete = handleMessages(end);
    }
    if (m_stopped)
        return setReading(false);
    if (m_isOver)
        return;
    if (clock::now() >= end)
        noticeAbsence();
    if (!complete) {
        setReading(false);
        QMetaObject::invokeMethod(this, &localChannel::takeTurn, Qt::QueuedConnection);
    } else if (m_incoming.isTooLong()) {
        dump("---- closing a local channel, its message is too long", 0);
        cutOff();
        endClient();
    } else if (hasEnded()) {
        endClient();
    } else {
        setReading(true);
    }
}

/// Whether all complete messages have been handled before `end`, and the channel stays open.
bool localChannel::handleMessages(clock::time_point end)
{
    for (int count = 1; const std::optional<message> received = m_incoming.next(); ++count) {
        handle(*received);
        if (m_isOver || m_stopped || (count % messagesPerLook == 0 && clock::now() > end))
            return false;
    }
    return true;
}

void localChannel::handle(const message &received)
{
    m_isClient = m_isClient || received.kind != messageKind::events;
    switch (received.kind) {
    case messageKind::events:
        m_shared.m_listeners.addLocal(this);
        break;
    case messageKind::claim:
        claim();
        break;
    case messageKind::exit:
        m_stopped = m_life.requestExit();
        break;
    case messageKind::stop:
        m_life.stop();
        m_stopped = true;
        break;
    default:
        m_shared.handle(received, dialect::local, m_answers, m_asker.get());
    }
}

void localChannel::claim()
{
    const int slot = m_shared.claim();
    if (slot >= 0)
        m_claimed.push_back(slot);
    reply(wire::message(wire::replyKind::claimed, std::to_string(slot)));
}

answerFunction localChannel::nextAnswer()
{
    return [asker = QPointer(this), number = ++m_boxCount](quint32 code) {
        if (asker && !asker->m_isOver)
            asker->reply(
                wire::message(wire::replyKind::answer, std::to_string(number) + ';' + std::to_string(code)));
    };
}

void localChannel::reply(QByteArrayView bytes)
{
    // What happened before comes before.
    m_shared.m_listeners.flush();
    if (waiting() + bytes.size() > maxBacklog) {
        dump("---- closing a local channel that does not read its answers", 0);
        cutOff();
        endClient();
        return;
    }
    write(bytes);
}

/// Whoever only has ended its sending direction waits until everything was handled; one that was killed does
/// not.
void localChannel::noticeAbsence()
{
    if (!m_hungUpAt && isHungUp())
        m_hungUpAt = clock::now();
    if (m_isAbandoned || !m_hungUpAt || clock::now() - *m_hungUpAt < longestEstate)
        return;
    m_isAbandoned = true;
    m_life.clientGone();
}

void localChannel::endClient()
{
    if (m_isOver)
        return;
    // What its last messages have caused is its own, too.
    m_shared.m_listeners.flush();
    m_isOver = true;
    m_shared.m_listeners.removeLocal(this);
    for (const int slot : m_claimed)
        m_shared.release(slot);
    // Takes its boxes away.
    m_asker.reset();
    if (m_isClient)
        m_life.clientGone();
    finish();
}
