#include "server/channelTable.h"

#include <algorithm>

bool channelTable::enter(QTcpSocket *channel)
{
    const auto used = m_channels.begin() + m_count;
    if (m_count > 0 && !m_channels[0]) {
        m_channels[0] = channel;
        return true;
    }
    if (m_count < capacity) {
        *used = channel;
        ++m_count;
        return true;
    }
    const auto empty = std::find(m_channels.begin(), used, nullptr);
    if (empty == used)
        return false;
    *empty = channel;
    return true;
}

void channelTable::leave(const QTcpSocket *channel)
{
    std::replace(m_channels.begin(), m_channels.begin() + m_count, const_cast<QTcpSocket *>(channel),
                 static_cast<QTcpSocket *>(nullptr));
}

void channelTable::clear()
{
    m_channels.fill(nullptr);
    m_count = 0;
}

bool channelTable::hasChannels() const
{
    return std::any_of(m_channels.begin(), m_channels.begin() + m_count,
                       [](const QTcpSocket *channel) { return channel != nullptr; });
}
