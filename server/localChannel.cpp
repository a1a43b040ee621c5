#include "server/localChannel.h"

#include "log/dump.h"
#include "server/claimedSlots.h"
#include "server/handlers.h"
#include "server/lastPatience.h"

#include <QPointer>

#include <cerrno>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

using namespace std::chrono_literals;

/// What is read at one go, in bytes. It stays in the processor's cache.
constexpr qsizetype readSize = 64 * 1024;
/// For so long the messages of one channel are handled; then the others, the ticks and the painting have
/// their turn.
constexpr auto turn = 20ms;
/// The clock is looked at after so many messages.
constexpr int messagesPerLook = 16;
/// Bytes that may wait for a client that does not read.
constexpr qint64 maxBacklog = 4 * 1024 * 1024;

} // namespace

localChannel::localChannel(int descriptor, handlers &shared, claimedSlots &claims, bool mayEndDaemon)
    : m_descriptor(descriptor), m_shared(shared), m_claims(claims), m_mayEndDaemon(mayEndDaemon),
      m_readable(descriptor, QSocketNotifier::Read), m_writable(descriptor, QSocketNotifier::Write)
{
    m_writable.setEnabled(false);
    connect(&m_readable, &QSocketNotifier::activated, this, &localChannel::takeTurn);
    connect(&m_writable, &QSocketNotifier::activated, this, &localChannel::flush);
}

localChannel::~localChannel()
{
    m_shared.m_listeners.removeLocal(this);
    // Whoever deletes it is not told that it is over.
    m_finished = true;
    pollfd room{m_descriptor, POLLOUT, 0};
    while (waiting() > 0 && !m_deaf && poll(&room, 1, lastPatienceMs()) > 0)
        flush();
    m_readable.setEnabled(false);
    m_writable.setEnabled(false);
    ::close(m_descriptor);
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
        more = receive();
        complete = handleMessages(end);
    }
    if (m_isOver || m_stopped)
        return;
    if (!complete) {
        m_readable.setEnabled(false);
        QMetaObject::invokeMethod(this, &localChannel::takeTurn, Qt::QueuedConnection);
        return;
    }
    if (m_incoming.isTooLong()) {
        dump("---- closing a local channel, its message is too long", 0);
        cutOff();
    } else if (m_ended) {
        finish();
    } else {
        m_readable.setEnabled(true);
    }
}

bool localChannel::hasUnread() const
{
    int bytes = 0;
    return !m_isOver && ioctl(m_descriptor, FIONREAD, &bytes) == 0 && bytes > 0;
}

/// Whether more has probably come; the way through the event loop would cost as much as the reading.
bool localChannel::receive()
{
    char *const room = m_incoming.reserve(readSize);
    const ssize_t size = recv(m_descriptor, room, readSize, 0);
    if (size > 0)
        m_incoming.commit(size);
    else if (size == 0 || (errno != EAGAIN && errno != EINTR))
        m_ended = true;
    return size == readSize;
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
    if (received.kind == messageKind::events) {
        if (!std::exchange(m_listens, true))
            m_shared.m_listeners.addLocal(this);
        return;
    }
    m_isClient = true;
    switch (received.kind) {
    case messageKind::exit:
        requestExit();
        break;
    case messageKind::claim:
        reply("<claimed>" + QByteArray::number(m_claims.claim(this)) + "</claimed>");
        break;
    default:
        m_shared.handle(received, dialect::local, [this] { return nextAnswer(); });
    }
}

void localChannel::requestExit()
{
    dump("---- got exit command by client!", 0);
    if (!m_mayEndDaemon)
        return;
    m_stopped = true;
    m_readable.setEnabled(false);
    emit exitRequested();
}

answerFunction localChannel::nextAnswer()
{
    return [channel = QPointer(this), number = ++m_boxCount](quint32 code) {
        if (channel && !channel->m_isOver)
            channel->reply("<answer>" + QByteArray::number(number) + ';' + QByteArray::number(code) +
                           "</answer>");
    };
}

void localChannel::reply(const QByteArray &bytes)
{
    // What happened before comes before.
    m_shared.m_listeners.flush();
    if (waiting() + bytes.size() > maxBacklog) {
        dump("---- closing a local channel that does not read its answers", 0);
        cutOff();
        return;
    }
    write(bytes);
    flush();
}

void localChannel::write(QByteArrayView bytes)
{
    if (m_deaf || m_isOver)
        return;
    if (m_sent == m_outgoing.size()) {
        m_outgoing.resize(0);
        m_sent = 0;
    }
    m_outgoing.append(bytes);
}

void localChannel::flush()
{
    while (waiting() > 0 && !m_deaf) {
        const ssize_t sent = send(m_descriptor, m_outgoing.constData() + m_sent,
                                  static_cast<size_t>(waiting()), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0) {
            // What the client has sent is still to be read, so this does not end the channel.
            m_deaf = errno != EAGAIN && errno != EINTR;
            break;
        }
        m_sent += sent;
    }
    if (m_sent > maxBacklog / 4) {
        m_outgoing.remove(0, m_sent);
        m_sent = 0;
    }
    const bool mustWait = waiting() > 0 && !m_deaf;
    m_writable.setEnabled(mustWait);
    if (m_isOver && !mustWait && !std::exchange(m_finished, true))
        emit finished();
}

void localChannel::finish()
{
    if (m_isOver)
        return;
    // What its last messages have caused is its own, too.
    m_shared.m_listeners.flush();
    m_isOver = true;
    m_readable.setEnabled(false);
    m_shared.m_listeners.removeLocal(this);
    m_claims.release(this);
    if (m_isClient)
        emit clientGone();
    flush();
}

void localChannel::cutOff()
{
    m_deaf = true;
    finish();
}
