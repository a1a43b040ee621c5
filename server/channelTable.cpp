#include "server/channelTable.h"

#include <algorithm>

bool channelTable::enter(channel *client)
{
    const auto used = m_channels.begin() + m_count;
    if (m_count > 0 && !m_channels[0]) {
        m_channels[0] = client;
        return true;
    }
    if (m_count < capacity) {
        *used = client;
        ++m_count;
        return true;
    }
    const auto empty = std::find(m_channels.begin(), used, nullptr);
    if (empty == used)
        return false;
    *empty = client;
    return true;
}

void channelTable::leave(const channel *client)
{
    const auto left = std::find(m_channels.begin(), m_channels.end(), client);
    if (left != m_channels.end())
        *left = nullptr;
}

bool channelTable::hasChannels() const
{
    return std::any_of(m_channels.begin(), m_channels.end(), [](const channel *each) { return each; });
}
