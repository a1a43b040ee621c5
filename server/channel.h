#pragma once

#include "server/waitingBytes.h"
#include "wire/system.h"

#include <QObject>
#include <QSocketNotifier>

#include <netinet/in.h>

/// One client's connection, on a stream socket of either way in: bytes that come, and bytes that wait until
/// the client takes them. Who made it deletes it when it is finished.
class channel : public QObject
{
    Q_OBJECT

public:
    /// What is read at one go, in bytes; it stays in the processor's cache. Then the other channels, the
    /// ticks and the painting have their turn.
    static constexpr qsizetype readSize = 64 * 1024;
    /// Bytes that may wait for a client that does not read.
    static constexpr qint64 maxBacklog = 4 * 1024 * 1024;

    /// `taken` does not block.
    explicit channel(wire::descriptor taken);
    /// Gives the client a moment to take what still waits for it, then closes.
    ~channel() override;

    /// Reads into `room`, of `readSize` bytes. Returns how many have come; 0 when there are none now, or when
    /// the channel has ended.
    qsizetype receive(char *room);
    /// The client sends no more.
    bool hasEnded() const { return m_ended; }
    /// The client has sent something that was not read yet.
    bool hasUnread() const;
    /// The client sends no more, which is still to be noticed.
    bool isLeaving() const;
    /// The client neither sends nor reads any more.
    bool isHungUp() const;
    /// Whether `readable()` is told.
    void setReading(bool isOn) { m_readable.setEnabled(isOn); }

    /// Bytes that wait for the client to take them.
    qint64 waiting() const { return m_outgoing.size(); }
    /// Adds to what waits, and hands that to the system, as far as it takes it now. A client that has gone
    /// gets nothing.
    void write(QByteArrayView bytes);

    /// Reads no more, and closes when the client has taken what waits.
    void finish();
    /// As `finish()`, but does not wait for the client.
    void cutOff();

signals:
    /// Something has come, or the client has ended.
    void readable();
    /// It is closed to the client. Told once, and from the event loop: whoever writes need not expect it.
    void finished();

private:
    void flush();
    void send();
    bool mustWait() const { return waiting() > 0 && !m_deaf; }

    const wire::descriptor m_descriptor;
    QSocketNotifier m_readable;
    QSocketNotifier m_writable;
    waitingBytes m_outgoing;
    bool m_ended = false;
    /// The client takes no more.
    bool m_deaf = false;
    bool m_isFinishing = false;
    bool m_isFinished = false;
};

/// Takes in who connects to a listening socket, and is activated for as long as somebody waits. Some file
/// descriptors are kept for the display, the log and the statistics, and when there is none at all it tries
/// again a little later.
class acceptor : public QSocketNotifier
{
public:
    acceptor() : QSocketNotifier(Read) {}

    /// `listening`, -1 for none any more, does not block; it is not owned, and has to stay open.
    void listen(int listening);
    /// The next connection, which does not block; none when none waits. `peer`, if it is given, becomes the
    /// client's address, also of one that has reset its connection meanwhile.
    wire::descriptor next(sockaddr_in *peer = nullptr);
};
