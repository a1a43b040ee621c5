#include "server/receiver.h"

#include "widgets/busyWidget.h"

#include <QTcpSocket>

namespace
{

/// Events that may wait in a channel whose client does not read, in bytes.
constexpr qint64 maxBacklog = 4 * 1024 * 1024;
/// Collected events that are worth a system call of their own, in bytes.
constexpr qint64 fullBatch = 64 * 1024;

} // namespace

void receiver::sendEvent(const QString &eventCode)
{
    if (!hasListeners())
        return;
    const QByteArray event = "<event>" + eventCode.toLatin1() + "</event>";
    m_clientEventChannels.walk([&event](QTcpSocket *channel) {
        if (channel->bytesToWrite() + event.size() > maxBacklog)
            return;
        channel->write(event);
        if (!m_collectingEvents || channel->bytesToWrite() >= fullBatch)
            channel->flush();
    });
}

bool receiver::hasListeners()
{
    return m_clientEventChannels.at(0) != nullptr;
}

/// Sends what was collected while the messages of one read were handled: a system call for each event and
/// channel would cost more than all the rest of an update.
void receiver::flushEvents()
{
    m_clientEventChannels.walk([](QTcpSocket *channel) { channel->flush(); });
}

void receiver::updateTotalPercent(int currentPercent, int remainingSeconds)
{
    if (m_splash && m_windowIsActive)
        m_splash->setBusyPercent(currentPercent);
    if (hasListeners())
        sendEvent(QStringLiteral("totalProgress=") + QString::number(currentPercent) + QLatin1Char('|') +
                  QString::number(remainingSeconds));
}
