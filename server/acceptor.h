#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <netinet/in.h>

/// Takes in who connects to a listening socket. Some file descriptors are kept for the display, the log and
/// the statistics, and when there is none at all it tries again a little later.
class acceptor : public QObject
{
    Q_OBJECT

public:
    /// `listening` does not block; it is not owned, and has to stay open.
    explicit acceptor(int listening);

    /// The next connection, which does not block and is the caller's; -1 when none waits. `peer`, if it is
    /// given, becomes the client's address, also of one that has reset its connection meanwhile.
    int next(sockaddr_in *peer = nullptr);

signals:
    /// Somebody has connected. Told again for as long as somebody waits.
    void incoming();

private:
    QSocketNotifier m_incoming;
};
