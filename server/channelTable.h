#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

class channel;

/// The channels of one server, at most ten. They are not owned.
///
/// The number of slots is a high-water mark: it is never lowered. A channel that closes leaves an empty slot;
/// of the empty slots, slot 0 alone is filled again while there is room at the end.
class channelTable
{
public:
    static constexpr std::size_t capacity = 10;

    /// Gives `client` a slot; false when the table is full.
    bool enter(channel *client)
    {
        const bool isFirst = !m_slots.empty() && !m_slots.front();
        if (!isFirst && m_slots.size() < capacity) {
            m_slots.push_back(client);
            return true;
        }
        const auto empty = std::find(m_slots.begin(), m_slots.end(), nullptr);
        if (empty == m_slots.end())
            return false;
        *empty = client;
        return true;
    }
    /// Empties the slot that holds `client`, if any.
    void leave(channel *client)
    {
        std::replace(m_slots.begin(), m_slots.end(), client, static_cast<channel *>(nullptr));
    }
    /// Whether any slot holds a channel.
    bool hasChannels() const
    {
        return std::any_of(m_slots.begin(), m_slots.end(), [](const channel *each) { return each; });
    }
    /// The channels in front of the first empty slot: all that events reach.
    std::vector<channel *> reached() const
    {
        return {m_slots.begin(), std::find(m_slots.begin(), m_slots.end(), nullptr)};
    }

private:
    std::vector<channel *> m_slots;
};
