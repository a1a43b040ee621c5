#include "server/eventListeners.h"

#include "server/channel.h"
#include "wire/tags.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace
{

using namespace std::chrono_literals;

/// Collected events that are worth a system call of their own, in bytes.
constexpr qsizetype fullBatch = 64 * 1024;
/// Less than the 20 ms that are promised: the message in hand takes its time, too.
constexpr auto longestWait = 10ms;

constexpr auto eventTags = wire::tagsOf(wire::replyKind::event);

void appendEvent(QByteArray &events, wire::eventKind kind, std::initializer_list<int> numbers)
{
    char text[64]; // the longest has 52
    char *end = text;
    const auto add = [&end](std::string_view part) { end = std::copy(part.begin(), part.end(), end); };
    add(eventTags.opening);
    add(wire::nameOf(kind));
    for (const int &number : numbers) {
        add(&number == numbers.begin() ? "" : "|");
        end = std::to_chars(end, std::end(text), number).ptr;
    }
    add(eventTags.closing);
    events.append(text, end - text);
}

/// As many of the events, from the first on, as find room.
QByteArrayView fitting(QByteArrayView events, qint64 room)
{
    if (events.size() <= room)
        return events;
    const QByteArrayView cut = events.first(std::max<qint64>(room, 0));
    const QByteArrayView closing = eventTags.closing;
    const qsizetype last = cut.lastIndexOf(closing);
    return last < 0 ? QByteArrayView() : cut.first(last + closing.size());
}

void deliver(const std::vector<channel *> &listeners, QByteArrayView events)
{
    for (channel *listener : listeners)
        listener->write(fitting(events, channel::maxBacklog - listener->waiting()));
}

} // namespace

eventListeners::batch::~batch()
{
    if (--m_listeners.m_openBatches == 0)
        m_listeners.flush();
}

void eventListeners::setPortListeners(std::vector<channel *> listeners)
{
    flush();
    m_port = std::move(listeners);
}

void eventListeners::addLocal(channel *listener)
{
    if (std::find(m_local.begin(), m_local.end(), listener) != m_local.end())
        return;
    flush();
    m_local.push_back(listener);
}

void eventListeners::removeLocal(channel *listener)
{
    std::erase(m_local, listener);
}

void eventListeners::collect(wire::eventKind kind, std::initializer_list<int> numbers)
{
    if (m_collected.isEmpty())
        m_firstCollected = clock::now();
    appendEvent(m_collected, kind, numbers);
    if (m_openBatches == 0 || m_collected.size() >= fullBatch)
        flush();
}

void eventListeners::sendLocal(wire::eventKind kind)
{
    flush();
    deliver(m_local, wire::message(wire::replyKind::event, wire::nameOf(kind)));
}

void eventListeners::flushIfDue()
{
    if (!m_collected.isEmpty() && clock::now() - m_firstCollected >= longestWait)
        flush();
}

void eventListeners::flush()
{
    if (m_collected.isEmpty())
        return;
    deliver(m_port, m_collected);
    deliver(m_local, m_collected);
    m_collected.resize(0);
}
