#include "server/receiver.h"

#include "widgets/busyWidget.h"

#include <QTcpSocket>

namespace
{

/// Events that may wait in a channel whose client does not read, in bytes.
constexpr qint64 maxBacklog = 4 * 1024 * 1024;

} // namespace

void receiver::sendEvent(const QString &eventCode)
{
    const QByteArray event = QByteArray("<event>") + eventCode.toLatin1() + "</event>";
    m_clientEventChannels.walk([&event](QTcpSocket *channel) {
        if (channel->bytesToWrite() + event.size() > maxBacklog)
            return;
        channel->write(event);
        channel->flush();
    });
}

void receiver::updateTotalPercent(int currentPercent, int remainingSeconds)
{
    if (m_splash && m_windowIsActive)
        m_splash->setBusyPercent(currentPercent);
    sendEvent(QStringLiteral("totalProgress=") + QString::number(currentPercent) + QLatin1Char('|') +
              QString::number(remainingSeconds));
}
