#include "client/channelSocket.h"
#include "client/listeningSocket.h"
#include "client/lockFile.h"
#include "client/processHandle.h"
#include "client/progressClient.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace
{

using error = progressClient::error;
using ports = progressClient::ports;

std::string contentOf(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A daemon with a base port has two arguments (three strings) and knows no request to end.
bool hasBasePort(pid_t process)
{
    const std::string line = contentOf("/proc/" + std::to_string(process) + "/cmdline");
    return std::count(line.begin(), line.end(), '\0') == 3;
}

/// The daemon's process, if it is one of this user's. A lock file can be stale and a port of it belong to
/// something else by now, but hardly both ports to the same process.
pid_t findProcess(const ports &daemonPorts)
{
    const auto command = findListener(daemonPorts.command);
    const auto event = findListener(daemonPorts.event);
    if (!command || !event || command->owner != ::geteuid())
        return 0;
    const pid_t process = processOf(*command);
    return process == processOf(*event) ? process : 0;
}

/// A daemon that ends already, because its last client has gone, needs no asking.
void requestEnd(const ports &daemonPorts, const deadline &until)
{
    try {
        channelSocket commands = channelSocket::connect(daemonPorts.command, until);
        commands.send("<exit/>", until);
        commands.finish(until);
    } catch (const error &problem) {
        if (problem.why() != error::reason::gone && problem.why() != error::reason::notRunning)
            throw;
    }
}

/// A daemon that was killed leaves its lock file; another one may have come up meanwhile.
void removeLeftLockFile(const std::string &path, const ports &old)
{
    const auto left = readLockFile(path);
    if (left && left->command == old.command && left->event == old.event)
        ::unlink(path.c_str());
}

} // namespace

void progressClient::stopDaemon(const std::string &identifier, milliseconds timeout)
{
    const deadline until(timeout);
    const std::string path = lockFilePath(identifier);
    const auto daemonPorts = readLockFile(path);
    const pid_t process = daemonPorts ? findProcess(*daemonPorts) : 0;
    // Looked up afterwards: it may just have ended by itself.
    if (!daemonPorts || (process == 0 && !findListener(daemonPorts->command))) {
        if (daemonPorts)
            removeLeftLockFile(path, *daemonPorts);
        throw error(error::reason::notRunning, "no daemon \"" + identifier + "\" is running");
    }
    if (process == 0)
        throw error(error::reason::notOurs,
                    "port " + std::to_string(daemonPorts->command) + " belongs to no daemon of this user");
    const processHandle daemon(process);
    if (hasBasePort(process)) {
        // A stopped process takes the one signal only after the other.
        if (!daemon.signal(SIGTERM) || !daemon.signal(SIGCONT))
            throw error(error::reason::notOurs, "the daemon belongs to another user");
    } else {
        requestEnd(*daemonPorts, until);
    }
    if (!daemon.waitForEnd(until))
        throw error(error::reason::timedOut, "the daemon does not end in time");
    removeLeftLockFile(path, *daemonPorts);
}
