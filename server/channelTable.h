#pragma once

#include <array>
#include <cstddef>

class channel;

/// The channels of one server, at most ten. They are not owned.
///
/// The count is a high-water mark: it is never lowered. A channel that closes leaves an empty slot; of the
/// empty slots, slot 0 alone is filled again while there is room at the end. A walk ends at the first empty
/// slot.
class channelTable
{
public:
    /// Gives `client` a slot; false when the table is full.
    bool enter(channel *client);
    /// Empties the slot that holds `client`, if any.
    void leave(const channel *client);
    /// Whether any slot holds a channel.
    bool hasChannels() const;
    /// The channel at `slot`, null for an empty slot and for slots from the count on.
    channel *at(int slot) const
    {
        return slot < m_count ? m_channels[static_cast<std::size_t>(slot)] : nullptr;
    }

    /// Calls `visit` with each channel that a walk reaches. A visit may make channels leave.
    template <typename Visit> void walk(Visit visit) const
    {
        for (int slot = 0; channel *client = at(slot); ++slot)
            visit(client);
    }

private:
    static constexpr int capacity = 10;
    std::array<channel *, capacity> m_channels{};
    int m_count = 0;
};
