#pragma once

#include <QByteArray>
#include <QString>
#include <QTcpSocket>

/// A client's connection to one of the daemon's ports. What does not arrive in time comes out empty.
class clientChannel
{
public:
    explicit clientChannel(quint16 port);

    void send(const QByteArray &bytes);
    /// Sends one progress command.
    void progress(const QByteArray &command) { send("<progress>" + command + "</progress>"); }
    void configure(const QByteArray &entries) { send("<configuration>" + entries + "</configuration>"); }

    /// The next `count` bytes.
    QByteArray read(qsizetype count);
    /// The answer to a box: its code, or -1 when the channel has closed or nothing came in time.
    qint64 answer();
    /// The next events up to and including `last`, or up to where the channel closed or the time was over,
    /// with a blank between them.
    QString eventsUntil(const QString &last);
    /// Whether this event comes; those in front of it are dropped.
    bool hears(const QString &event) { return eventsUntil(event).endsWith(event); }
    /// Whether the daemon still serves this channel, an event channel: it answers an "activate" sent on it.
    /// What was sent on it before has been handled then.
    bool isServed();
    /// Reads on until the daemon closes the channel; false when it does not. What came is kept.
    bool waitForClosed();
    /// What has arrived and was not taken yet.
    QByteArray pending();

    /// Hangs up, and returns when the daemon has noticed.
    void close();
    /// With a limit of a few bytes the client reads no more, and what the daemon sends piles up on its way.
    void setReadBufferSize(qint64 bytes) { m_socket.setReadBufferSize(bytes); }
    /// Hangs up as a client that is killed: the daemon sees an error, not an end.
    void abort() { m_socket.abort(); }

private:
    bool waitForMore();

    QTcpSocket m_socket;
    QByteArray m_received;
};
