#pragma once

#include "wire/words.h"

#include <QByteArray>

#include <chrono>
#include <initializer_list>
#include <vector>

class channel;

/// Who hears events, and how events reach them: while a batch of messages is handled, events are collected,
/// since a system call for each event and channel would cost more than all the rest of an update. They leave
/// when the batch ends, at the latest 20 ms after the first of them (or after the message in hand). A channel
/// whose client does not read misses whole events: at most 4 MiB wait in it.
class eventListeners
{
public:
    /// While one of these lives, events are collected. They nest.
    class batch
    {
    public:
        explicit batch(eventListeners &listeners) : m_listeners(listeners) { ++m_listeners.m_openBatches; }
        ~batch();
        Q_DISABLE_COPY_MOVE(batch)

    private:
        eventListeners &m_listeners;
    };

    /// The channels of the event port that hear, in this order. No channel is owned.
    void setPortListeners(std::vector<channel *> listeners);
    /// A local channel hears what happens from now on, if it does not already.
    void addLocal(channel *listener);
    void removeLocal(channel *listener);

    /// Sends an event, with the one or two numbers that stand behind its name, to all listeners.
    void send(wire::eventKind kind, std::initializer_list<int> numbers = {})
    {
        if (!m_port.empty() || !m_local.empty())
            collect(kind, numbers);
    }
    /// Sends what the event port does not know to the listeners of local channels alone.
    void sendLocal(wire::eventKind kind);
    /// Sends what was collected if it is time. To be called between two messages.
    void flushIfDue();
    void flush();

private:
    using clock = std::chrono::steady_clock;

    void collect(wire::eventKind kind, std::initializer_list<int> numbers);

    std::vector<channel *> m_port;
    std::vector<channel *> m_local;
    QByteArray m_collected;
    clock::time_point m_firstCollected;
    int m_openBatches = 0;
};
