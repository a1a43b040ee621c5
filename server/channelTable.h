#pragma once

#include <array>
#include <cstddef>

class QTcpSocket;

/// The channels of one kind, at most ten. The sockets are not owned.
///
/// The count is a high-water mark: it is never lowered while the daemon runs. A channel that closes leaves
/// an empty slot; of the empty slots, slot 0 alone is filled again while there is room at the end. A walk
/// ends at the first empty slot.
class channelTable
{
public:
    static constexpr int capacity = 10;

    /// Gives `channel` a slot; false when the table is full.
    bool enter(QTcpSocket *channel);
    /// Empties the slot that holds `channel`, if any.
    void leave(const QTcpSocket *channel);
    /// Forgets all channels.
    void clear();
    /// Whether any slot holds a channel.
    bool hasChannels() const;
    int count() const { return m_count; }
    /// The channel at `slot`, null for an empty slot and for slots from the count on.
    QTcpSocket *at(int slot) const
    {
        return slot < m_count ? m_channels[static_cast<std::size_t>(slot)] : nullptr;
    }

    /// Calls `visit` with each channel that a walk reaches. A visit may make channels leave.
    template <typename Visit> void walk(Visit visit) const
    {
        for (int slot = 0; QTcpSocket *channel = at(slot); ++slot)
            visit(channel);
    }

private:
    std::array<QTcpSocket *, capacity> m_channels{};
    int m_count = 0;
};
