#include "app/serve.h"

#include "app/MyApplication.h"
#include "app/commandLine.h"
#include "app/lockFile.h"
#include "app/standardError.h"
#include "log/dump.h"
#include "server/handlers.h"
#include "server/lifespan.h"
#include "server/localServer.h"
#include "server/localSocket.h"
#include "server/receiver.h"
#include "stats/statistics.h"

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace
{

/// Seconds in which the client that a private daemon was started for has to come.
constexpr int longestWait = 30;
/// Seconds that a disk may need.
constexpr unsigned longestSave = 30;

int longestAlone(const commandLine &line)
{
    if (line.stays)
        return line.idleSeconds;
    return line.isPrivate ? longestWait : 0;
}

/// The port to ask for the event server: the next one, but with a base port that stands for any free port
/// (0 and 1), any free port too.
int eventPort(int basePort)
{
    if (basePort == 0 || basePort == 1)
        return basePort;
    return static_cast<int>(static_cast<unsigned>(basePort) + 1U);
}

/// The servers of a daemon, and what its clients share.
class servers
{
public:
    explicit servers(const commandLine &line);

    /// Opens the local socket. Gives the exit status of a private daemon, which has no other way in.
    std::optional<int> openLocalSocket();
    /// Writes the lock file; false when that is impossible.
    bool publishPorts() const;
    /// The event loop, from when the daemon is ready to when it has left. Gives the exit status.
    int run();

private:
    /// Leaves the files as after an orderly end: no socket, no lock file, the learned runs saved. The toolkit
    /// also ends the process by itself, when the X server goes away; they are left in order then, too.
    static void leaveFiles();
    /// The part of that which a signal's handler may do: the runs were saved when they ended.
    static void leaveNames();

    const commandLine &m_line;
    const lockFile m_lockFile;
    handlers m_shared;
    lifespan m_life;
    localSocket m_socket;
    localServer m_local;
    std::optional<receiver> m_commands;
    std::optional<receiver> m_events;
};

/// What is served while the files are to be left in order at exit, else null.
servers *served = nullptr;

servers::servers(const commandLine &line)
    : m_line(line), m_lockFile(line.identifier), m_life({line.basePort, line.stays, longestAlone(line)}),
      m_local(m_shared, m_life)
{
    if (line.isPrivate)
        return;
    m_commands.emplace(receiver::kind::command, line.basePort, m_shared, m_life);
    m_events.emplace(receiver::kind::event, eventPort(line.basePort), m_shared, m_life);
}

std::optional<int> servers::openLocalSocket()
{
    const localSocket::outcome result = m_socket.open(m_line.identifier);
    m_local.listen(m_socket.descriptor());
    if (result == localSocket::outcome::listening)
        return std::nullopt;
    dump(("---- no local socket: " + m_socket.reason()).c_str(), 0);
    if (!m_line.isPrivate)
        return std::nullopt;
    complain(m_socket.reason());
    return result == localSocket::outcome::answered ? EXIT_FAILURE : cannotServe(m_line);
}

bool servers::publishPorts() const
{
    if (m_line.isPrivate)
        return true;
    const int commandPort = m_commands->getPort();
    const int port = m_events->getPort();
    if (commandPort == 0 || port == 0)
        complain(std::string(m_line.identifier) + ": cannot listen on " +
                 (commandPort == port ? "its ports" : "one of its ports") +
                 "; does another daemon of this name run?");
    if (m_lockFile.write(commandPort, port))
        return true;
    complain(m_lockFile.path() + " is no regular file of this user's, and stays");
    return false;
}

void servers::leaveNames()
{
    if (!served)
        return;
    served->m_socket.close();
    if (!served->m_line.isPrivate)
        served->m_lockFile.remove();
}

void servers::leaveFiles()
{
    leaveNames();
    const servers *all = std::exchange(served, nullptr);
    if (all && all->m_line.statisticsName)
        statistics.saveFinally(all->m_line.statisticsName);
}

int servers::run()
{
    served = this;
    prepareDump();
    std::atexit(leaveFiles);
    logToolkitMessages();
    keepEndShort(leaveNames);

    const int code = MyApplication::exec();

    limitEnd(code);
    // The end of the local channels comes before that of the files. Who was told of it and comes back finds
    // no socket any more.
    m_shared.m_boxes.dismiss();
    m_local.listen(-1);
    m_shared.m_listeners.sendLocal(wire::eventKind::shutDown);
    m_socket.close();
    m_local.close();
    // A save that is under way is not cut short for a display's sake.
    limitEnd(code, longestSave);
    leaveFiles();
    limitEnd(code);
    // The listeners of the ports hear of the end when the files are in order.
    m_shared.cleanup();
    return code;
}

} // namespace

int cannotServe(const commandLine &line)
{
    constexpr int noPrivateDaemon = 2;
    return line.isPrivate ? noPrivateDaemon : EXIT_FAILURE;
}

int serve(const commandLine &line)
{
    std::optional<endSignals> signalsThatEnd;
    if (line.isPrivate) {
        signalsThatEnd.emplace();
        setLog(line.logFile);
    }
    for (const char *path : unusableLogs())
        complain(std::string(path) + " is no regular file of this user's: nothing is logged there");
    servers all(line);
    if (line.statisticsName)
        statistics.load(line.statisticsName,
                        line.isPrivate ? statisticsPlace::user : statisticsPlace::machine);
    if (const auto failure = all.openLocalSocket())
        return *failure;
    if (!all.publishPorts())
        return EXIT_FAILURE;
    return all.run();
}
