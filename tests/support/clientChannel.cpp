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
    const QByteArray opening("<event>");
    const QByteArray closing("</event>");
    QStringList events;
    while (events.isEmpty() || events.constLast() != last) {
        while (!m_received.contains(closing) && waitForMore()) {
        }
        const qsizetype end = m_received.indexOf(closing);
        if (end < 0)
            break;
        const QByteArray text = m_received.left(end);
        m_received.remove(0, end + closing.size());
        // Anything that is not an event, a text between two of them for instance, must not go unnoticed.
        events << QString::fromLatin1(text.startsWith(opening) ? text.mid(opening.size())
                                                               : "not an event: " + text);
    }
    return events.join(' ');
}

bool clientChannel::isServed()
{
    progress("activate");
    return hears("isActivated");
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
