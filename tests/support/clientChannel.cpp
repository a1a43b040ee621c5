#include "tests/support/clientChannel.h"

#include "tests/support/childProcess.h"

#include <QHostAddress>
#include <QStringList>
#include <QtEndian>

#include <sys/socket.h>

clientChannel::clientChannel(quint16 port)
{
    m_socket.connectToHost(QHostAddress::LocalHost, port);
    if (!m_socket.waitForConnected(patienceMs))
        qWarning("cannot connect to port %d: %s", int{port}, qPrintable(m_socket.errorString()));
}

void clientChannel::send(const QByteArray &bytes)
{
    m_socket.write(bytes);
    while (m_socket.bytesToWrite() > 0 && m_socket.waitForBytesWritten(patienceMs)) {
    }
}

bool clientChannel::waitForMore()
{
    const bool more = m_socket.bytesAvailable() > 0 || m_socket.waitForReadyRead(patienceMs);
    m_received += m_socket.readAll();
    return more;
}

QByteArray clientChannel::read(qsizetype count)
{
    while (m_received.size() < count && waitForMore()) {
    }
    QByteArray bytes = m_received.left(count);
    m_received.remove(0, bytes.size());
    return bytes;
}

qint64 clientChannel::answer()
{
    const QByteArray code = read(4);
    return code.size() == 4 ? qint64{qFromUnaligned<quint32>(code.constData())} : -1;
}

QString clientChannel::eventsUntil(const QString &last)
{
    constexpr qsizetype opening = sizeof "<event>" - 1;
    constexpr qsizetype closing = sizeof "</event>" - 1;
    QStringList events;
    while (events.isEmpty() || events.constLast() != last) {
        qsizetype end = m_received.indexOf("</event>");
        while (end < 0 && waitForMore())
            end = m_received.indexOf("</event>");
        if (end < 0)
            break;
        // Anything that is not an event, a text between two of them for instance, must not go unnoticed.
        events << (m_received.startsWith("<event>")
                       ? QString::fromLatin1(m_received.mid(opening, end - opening))
                       : QStringLiteral("not an event: ") + QString::fromLatin1(m_received.left(end)));
        m_received.remove(0, end + closing);
    }
    return events.join(QLatin1Char(' '));
}

bool clientChannel::isServed()
{
    progress("activate");
    return eventsUntil(QStringLiteral("isActivated")).endsWith(QStringLiteral("isActivated"));
}

bool clientChannel::waitForClosed()
{
    while (m_socket.state() == QAbstractSocket::ConnectedState && waitForMore()) {
    }
    return m_socket.state() == QAbstractSocket::UnconnectedState;
}

QByteArray clientChannel::pending()
{
    m_socket.waitForReadyRead(0);
    m_received += m_socket.readAll();
    return m_received;
}

void clientChannel::close()
{
    // The daemon closes its end when it has read that nothing more will come.
    ::shutdown(static_cast<int>(m_socket.socketDescriptor()), SHUT_WR);
    waitForClosed();
}
