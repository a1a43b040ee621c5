#include "server/receiver.h"

#include "log/dump.h"
#include "server/handlers.h"

#include <QElapsedTimer>

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <functional>
#include <utility>

namespace
{

/// Text that may wait for its closing tag, in bytes.
constexpr qsizetype maxWaiting = 16 * 1024 * 1024;
/// Answers that may wait in a channel whose client does not read, in bytes.
constexpr qint64 maxUnreadAnswers = 1024 * 1024;

/// The address of this end of a socket, 0.0.0.0 and port 0 when there is none.
sockaddr_in addressOf(int descriptor)
{
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &size);
    return address;
}

/// A listening socket on all IPv4 addresses, none when the port cannot be had.
wire::descriptor listenOn(int portnum)
{
    constexpr int longestQueue = 50;
    constexpr int on = 1;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(portnum < 2 ? in_port_t{0} : static_cast<in_port_t>(portnum));
    wire::descriptor listening(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    // Connections of a daemon that has just ended must not keep the port from its successor.
    setsockopt(listening.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (bind(listening.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        listen(listening.get(), longestQueue) != 0)
        listening.close();
    return listening;
}

bool isOwnAddress(in_addr_t wanted)
{
    ifaddrs *all = nullptr;
    if (getifaddrs(&all) != 0)
        return false;
    bool isFound = false;
    for (const ifaddrs *each = all; each && !isFound; each = each->ifa_next)
        isFound = each->ifa_addr && each->ifa_addr->sa_family == AF_INET &&
                  reinterpret_cast<const sockaddr_in *>(each->ifa_addr)->sin_addr.s_addr == wanted;
    freeifaddrs(all);
    return isFound;
}

/// The servers listen on all addresses, but serve only processes of this machine.
bool isOfThisMachine(int descriptor, in_addr_t peer)
{
    return ntohl(peer) >> IN_CLASSA_NSHIFT == IN_LOOPBACKNET ||
           peer == addressOf(descriptor).sin_addr.s_addr || isOwnAddress(peer);
}

/// Somebody who tries again and again must not fill the disk: at most a line a second.
void logRefusal()
{
    constexpr qint64 silenceMs = 1000;
    static QElapsedTimer sinceLast;
    if (sinceLast.isValid() && !sinceLast.hasExpired(silenceMs))
        return;
    dump("---- refusing connection from another machine", 0);
    sinceLast.start();
}

} // namespace

receiver::receiver(kind serves, int portnum, handlers &shared, lifespan &life)
    : m_kind(serves), m_portnum(portnum), m_shared(shared), m_life(life), m_listening(listenOn(portnum))
{
    if (m_kind == kind::command)
        m_life.watch(*this);
    connect(&m_acceptor, &acceptor::activated, this, &receiver::connection);
    m_acceptor.listen(m_listening.get());
}

receiver::~receiver()
{
    m_acceptor.listen(-1);
    for (channel *client : m_channels.reached()) {
        leave(client);
        delete client;
    }
}

int receiver::getPort() const
{
    return ntohs(addressOf(m_listening.get()).sin_port);
}

wayIn::presence receiver::clients()
{
    // Somebody who has connected but was not accepted yet is a client, too.
    connection();
    return m_channels.hasChannels() ? presence::client : presence::none;
}

/// All that wait are taken in at once. But those who have come and gone meanwhile must not take the places of
/// the others.
void receiver::connection()
{
    sockaddr_in peer{};
    while (wire::descriptor taken = awaitsRoom() ? wire::descriptor() : m_acceptor.next(&peer)) {
        if (isOfThisMachine(taken.get(), peer.sin_addr.s_addr))
            admit(std::move(taken));
        else
            logRefusal();
    }
}

/// All places are taken, but by some who have gone, which is still to be noticed.
bool receiver::awaitsRoom() const
{
    const std::vector<channel *> all = m_channels.reached();
    return all.size() == channelTable::capacity &&
           std::any_of(all.begin(), all.end(), std::mem_fn(&channel::isLeaving));
}

void receiver::admit(wire::descriptor taken)
{
    const int descriptor = taken.get();
    auto *client = new channel(std::move(taken));
    if (!m_channels.enter(client)) {
        delete client;
        return;
    }
    client->setParent(this);
    // An event or an answer is not to wait for the next one.
    constexpr int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    connect(client, &channel::readable, this, [this, client] { gotData(client); });
    connect(client, &channel::finished, this, [this, client] {
        client->deleteLater();
        leave(client);
    });
    shareListeners();
}

void receiver::leave(channel *client)
{
    m_channels.leave(client);
    shareListeners();
    if (m_kind == kind::command)
        m_life.clientGone();
}

/// Tells which channels events reach.
void receiver::shareListeners() const
{
    if (m_kind == kind::event)
        m_shared.m_listeners.setPortListeners(m_channels.reached());
}

void receiver::gotData(channel *client)
{
    char text[channel::readSize];
    const qsizetype size = client->receive(text);
    if (size > 0) {
        // What waits behind a box waits no longer when more arrives, and is still its own sender's.
        while (dispatch()) {
        }
        m_client = client;
        m_command.append(QByteArrayView(text, qstrnlen(text, size)));
        dispatch();
        if (m_command.waiting() > maxWaiting) {
            dump("---- dropping text without a closing tag, bytes", static_cast<int>(m_command.waiting()));
            m_command.clear();
        }
    }
    if (client->hasEnded())
        client->finish();
}

/// Handles the messages that wait. A box keeps those behind it waiting until it is answered, or until more
/// arrives; returns true then.
bool receiver::dispatch()
{
    const eventListeners::batch batch(m_shared.m_listeners);
    const noticeBoxes &boxes = m_shared.m_boxes;
    while (const std::optional<message> received = m_command.next()) {
        const qsizetype openBoxes = boxes.openCount();
        if (received->kind == messageKind::exit)
            m_life.requestExit(m_portnum);
        else
            m_shared.handle(*received, dialect::port, m_answers);
        if (boxes.openCount() > openBoxes)
            return true;
    }
    return false;
}

/// A box is answered with the four bytes of its code.
answerFunction receiver::nextAnswer()
{
    return [this, asker = m_client](quint32 code) {
        if (asker && asker->waiting() <= maxUnreadAnswers)
            asker->write({reinterpret_cast<const char *>(&code), sizeof code});
        // The messages behind the box's have waited for its answer.
        QMetaObject::invokeMethod(this, &receiver::dispatch, Qt::QueuedConnection);
    };
}
