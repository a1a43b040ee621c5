#include "client/localSocket.h"
#include "client/processHandle.h"
#include "client/progressClient.h"
#include "client/protocolText.h"
#include "client/socketPath.h"

#include <csignal>

namespace
{

using error = progressClient::error;

/// What a daemon says to a client that claims a slot, listens, and asks it to end. The claim tells a daemon
/// from anything else; the event "shutDown" tells one that ends from one with a base port, which ignores the
/// request.
struct farewell {
    bool isDaemon = false;
    bool ends = false;
};

farewell requestEnd(localSocket &socket, const deadline &until)
{
    socket.send("<claim/><events/><exit/>", until);
    std::string heard = socket.finish(until);
    farewell made;
    while (const auto one = takeReceived(heard)) {
        made.isDaemon = made.isDaemon || one->what == received::kind::claimed;
        made.ends = made.ends || (one->what == received::kind::event && one->text == "shutDown");
    }
    return made;
}

} // namespace

void progressClient::stopDaemon(const std::string &identifier, milliseconds timeout)
{
    const deadline until(timeout);
    localSocket socket = localSocket::connect(identifier, until);
    // Held before it answers: the number cannot have come to mean another process.
    const processHandle daemon(socket.daemonProcess());
    // One that is stopped could not answer.
    daemon.signal(SIGCONT);
    const farewell said = requestEnd(socket, until);
    if (!said.isDaemon)
        throw error(error::reason::notOurs, "what answers at " + ::socketPath(identifier) + " is no daemon");
    if (!said.ends && !daemon.signal(SIGTERM))
        throw error(error::reason::notOurs, "the daemon belongs to another user");
    if (!daemon.waitForEnd(until))
        throw error(error::reason::timedOut, "the daemon does not end in time");
}
