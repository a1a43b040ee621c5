#include "server/receiver.h"

#include "log/dump.h"
#include "server/descriptors.h"
#include "server/handlers.h"
#include "server/lastPatience.h"

#include <QElapsedTimer>
#include <QNetworkInterface>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

namespace
{

/// What is read from a channel at one go, in bytes; then the others, the ticks and the painting have their
/// turn.
constexpr qint64 readSize = 64 * 1024;

/// The servers listen on all addresses, but serve only processes of this machine.
bool isOfThisMachine(const QTcpSocket *channel)
{
    const QHostAddress peer = channel->peerAddress();
    return peer.isLoopback() || peer == channel->localAddress() ||
           QNetworkInterface::allAddresses().contains(peer);
}

/// Somebody who tries again and again must not fill the disk: at most a line a second.
void logRefusal(const QTcpSocket *channel)
{
    constexpr qint64 silenceMs = 1000;
    static QElapsedTimer sinceLast;
    if (sinceLast.isValid() && !sinceLast.hasExpired(silenceMs))
        return;
    const bool wasReset = channel->peerAddress().isNull();
    dump(wasReset ? "---- connection was reset before it was accepted"
                  : "---- refusing connection from another machine",
         0);
    sinceLast.start();
}

/// A channel of the event port, to the listeners.
class portListener : public QObject, public eventListener
{
    Q_OBJECT

public:
    explicit portListener(QTcpSocket *channel) : QObject(channel), m_channel(channel) {}

    qint64 waiting() const override { return m_channel->bytesToWrite(); }
    void write(QByteArrayView events) override { m_channel->write(events.data(), events.size()); }
    void flush() override { m_channel->flush(); }

private:
    QTcpSocket *m_channel;
};

} // namespace

receiver::receiver(int portnum, bool isEventChannel)
    : m_isEventServer(isEventChannel), m_server(new QTcpServer(this)), m_dontQuit(portnum >= 0)
{
    m_server->listen(QHostAddress::AnyIPv4, portnum < 2 ? quint16{0} : static_cast<quint16>(portnum));
    connect(m_server, &QTcpServer::newConnection, this, &receiver::connection);
    // When no file descriptor is left the toolkit stops accepting, and for good unless it is told to go on.
    connect(m_server, &QTcpServer::acceptError, m_server, [this] {
        dump("---- cannot accept a connection, trying again, error", m_server->serverError());
        QTimer::singleShot(acceptAgainMs, m_server, &QTcpServer::resumeAccepting);
    });
}

receiver::~receiver()
{
    channels().walk([this](QTcpSocket *channel) {
        disconnect(channel, &QTcpSocket::readyRead, this, &receiver::gotData);
        drain(channel);
        channel->close();
    });
    channels().clear();
    if (m_isEventServer)
        shareListeners();
    m_server->close();
}

int receiver::getPort() const
{
    return m_server->serverPort();
}

channelTable &receiver::channels() const
{
    return m_isEventServer ? m_clientEventChannels : m_clientCommandChannels;
}

QTcpSocket *receiver::findClient() const
{
    return qobject_cast<QTcpSocket *>(sender());
}

void receiver::connection()
{
    while (QTcpSocket *channel = m_server->nextPendingConnection()) {
        if (!admit(channel)) {
            delete channel;
            continue;
        }
        channel->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        channel->setReadBufferSize(readSize);
        connect(channel, &QTcpSocket::readyRead, this, &receiver::gotData);
        connect(channel, &QTcpSocket::disconnected, this, &receiver::closed);
        if (m_isEventServer) {
            new portListener(channel);
            shareListeners();
        }
    }
}

bool receiver::admit(QTcpSocket *channel) const
{
    if (!isOfThisMachine(channel)) {
        logRefusal(channel);
        return false;
    }
    return leavesDescriptors(channel->socketDescriptor()) && channels().enter(channel);
}

void receiver::closed()
{
    QTcpSocket *gone = findClient();
    channels().leave(gone);
    gone->deleteLater();
    if (m_isEventServer)
        shareListeners();
    else if (!m_dontQuit)
        emit clientGone();
}

bool receiver::hasClients() const
{
    // Somebody who has connected but was not accepted yet is a client, too; this takes them in.
    m_server->waitForNewConnection(0);
    return channels().hasChannels() || m_server->hasPendingConnections();
}

/// Tells which channels events reach.
void receiver::shareListeners() const
{
    std::vector<eventListener *> reached;
    channels().walk(
        [&reached](QTcpSocket *channel) { reached.push_back(channel->findChild<portListener *>()); });
    handlers::instance().m_listeners.setPortListeners(std::move(reached));
}

/// Gives a channel that still holds events the chance to take all of them before it is closed.
void receiver::drain(QTcpSocket *channel)
{
    while (channel->bytesToWrite() > 0 && channel->waitForBytesWritten(lastPatienceMs())) {
    }
}

#include "channels.moc"
