#pragma once

#include "server/channelTable.h"
#include "server/messageBuffer.h"
#include "server/noticeBoxes.h"

#include <QObject>
#include <QPointer>

class QTcpServer;
class QTcpSocket;

/// A server of the daemon: the command server, on which clients send messages, or the event server, on
/// which they receive events (and may send messages, too). Each enters its sockets into the channel table
/// of its kind and frames what arrives on any of them in one buffer. What messages do is `handlers`' part.
///
/// Sources: channels.cpp (servers and channel tables), framing.cpp (messages).
class receiver : public QObject
{
    Q_OBJECT

public:
    /// Listens at once on all IPv4 addresses: on `portnum`, of which the low 16 bits count, or on a free port
    /// when it is below 2. With a `portnum` of 0 or more, clients cannot end the daemon.
    receiver(int portnum, bool isEventChannel);
    /// Closes the channels and stops listening.
    ~receiver() override;

    /// The port that the server listens on; 0 when it could not be bound.
    int getPort() const;
    /// Whether a client of the command server is there, or about to be.
    bool hasClients() const;

    /// Loads the table of runs that were learned for the daemon's identifier.
    static void loadStatisticData(const char *file);
    /// Saves the table at the end of the process.
    static void saveStatisticData(const char *file);
    /// Sends one event to all that listen.
    static void sendEvent(const QString &eventCode);
    /// Shows the active dialog in front of the other windows, in non-modal mode as a fresh copy.
    static void BringWindowToFront();
    /// The orderly end, after the event loop: answers open boxes, says "shutDown", deletes the windows.
    static void cleanup();

signals:
    /// A command channel has closed, and clients can end the daemon.
    void clientGone();

private slots:
    void connection();
    void gotData();
    void closed();

private:
    /// The channel whose signal is being handled.
    QTcpSocket *findClient() const;
    channelTable &channels() const;
    bool admit(QTcpSocket *channel) const;
    static void drain(QTcpSocket *channel);
    void shareListeners() const;

    bool dispatch();
    void handle(const message &received);
    answerFunction nextAnswer();
    void doExit();

    inline static channelTable m_clientCommandChannels;
    inline static channelTable m_clientEventChannels;

    bool m_isEventServer;
    QTcpServer *m_server;
    /// Clients cannot end the daemon.
    bool m_dontQuit;
    /// What arrived and has not been handled yet, from all channels of this server.
    messageBuffer m_command;
    /// The channel that the text which waits came from; boxes are answered on it.
    QPointer<QTcpSocket> m_client;
};
