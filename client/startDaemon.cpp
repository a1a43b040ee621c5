#include "client/progressClient.h"

#include "client/lockFile.h"
#include "client/processHandle.h"
#include "client/waiting.h"

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

using error = progressClient::error;
using ports = progressClient::ports;

constexpr std::chrono::milliseconds lookInterval{5};

/// Of several processes that want to start the same daemon, one holds the turn. The kernel takes it back when
/// the holder ends, and no file stays behind.
class startTurn
{
public:
    explicit startTurn(const std::string &identifier)
        : m_fd(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)), m_name("progressd-start-" + identifier)
    {
    }
    startTurn(const startTurn &) = delete;
    startTurn &operator=(const startTurn &) = delete;
    ~startTurn() { ::close(m_fd); }

    bool take()
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        // A leading zero byte makes the name an abstract one.
        const std::size_t length = std::min(m_name.size(), sizeof address.sun_path - 1);
        std::memcpy(address.sun_path + 1, m_name.data(), length);
        const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + length);
        return ::bind(m_fd, reinterpret_cast<const sockaddr *>(&address), size) == 0;
    }

private:
    int m_fd;
    std::string m_name;
};

/// What the new process tells its starter through a pipe that closes when the program is running.
struct startReport {
    pid_t process = 0;
    int failure = 0; ///< errno of the attempt to run the program
};

void closeStreams()
{
    const int null = ::open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::dup2(null, stream);
    if (null > STDERR_FILENO)
        ::close(null);
}

/// In the daemon's process. Only calls that are allowed between fork and exec in a program with threads.
[[noreturn]] void runProgram(int reportFd, char *const *arguments)
{
    startReport report;
    report.process = ::getpid();
    ::setsid();
    closeStreams();
    // Whoever waits for the end of a file of the caller's must not wait for the daemon.
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    if (::write(reportFd, &report, sizeof report) == static_cast<ssize_t>(sizeof report)) {
        ::execvp(arguments[0], arguments);
        report.failure = errno;
        const ssize_t told = ::write(reportFd, &report, sizeof report);
        static_cast<void>(told);
    }
    ::_exit(127);
}

/// A child that is gone at once makes its own child nobody's: the daemon is no child of the caller, who need
/// not wait for it.
pid_t spawnDetached(const std::string &program, const std::string &identifier, int basePort)
{
    std::string name = program;
    std::string first = identifier;
    std::string second = std::to_string(basePort);
    char *arguments[] = {name.data(), first.data(),
                         basePort == progressClient::noBasePort ? nullptr : second.data(), nullptr};
    int reportPipe[2];
    if (::pipe2(reportPipe, O_CLOEXEC) != 0)
        throw error(error::reason::system, systemText("no pipe"));
    // A number below 3 would be overwritten with the streams.
    const int reportFd = ::fcntl(reportPipe[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(reportPipe[1]);

    const pid_t child = ::fork();
    if (child == 0) {
        if (::fork() == 0)
            runProgram(reportFd, arguments);
        ::_exit(0);
    }
    ::close(reportFd);
    if (child > 0) {
        while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
    }
    startReport report;
    startReport part;
    ssize_t got;
    while ((got = ::read(reportPipe[0], &part, sizeof part)) != 0) {
        if (got == static_cast<ssize_t>(sizeof part))
            report = part;
        else if (errno != EINTR)
            break;
    }
    ::close(reportPipe[0]);
    if (report.process == 0)
        throw error(error::reason::system, "cannot make a process");
    if (report.failure != 0) {
        errno = report.failure;
        throw error(error::reason::cannotStart, systemText("cannot run " + program));
    }
    return report.process;
}

/// A lock file whose daemon is gone would be taken for the new daemon's.
void removeStaleLockFile(const std::string &path)
{
    if (::unlink(path.c_str()) != 0 && errno != ENOENT)
        throw error(error::reason::cannotStart, systemText("cannot remove the stale lock file " + path));
}

ports waitUntilReady(const std::string &identifier, const processHandle &daemon, const deadline &until)
{
    const std::string path = progressClient::lockFilePath(identifier);
    for (;;) {
        const auto found = readLockFile(path);
        if (found && found->command != 0 && found->event != 0)
            return *found;
        if (found) {
            daemon.signal(SIGTERM);
            daemon.waitForEnd(until);
            ::unlink(path.c_str());
            throw error(error::reason::cannotStart,
                        "the daemon cannot listen: its port, or the next, is taken");
        }
        if (daemon.hasEnded())
            throw error(error::reason::cannotStart,
                        "the daemon ended before it was ready (no display? run it by hand to see why)");
        if (until.isOver()) {
            daemon.signal(SIGTERM);
            throw error(error::reason::timedOut, "the daemon is not ready in time");
        }
        std::this_thread::sleep_for(lookInterval);
    }
}

void check(const std::string &identifier, int basePort)
{
    if (identifier.empty() || identifier.find('/') != std::string::npos ||
        identifier.find('\0') != std::string::npos)
        throw error(error::reason::badArgument,
                    "an identifier is a part of a file name: not empty, without \"/\"");
    if (basePort != progressClient::noBasePort && basePort != 0 && (basePort < 2 || basePort > 65534))
        throw error(error::reason::badArgument, "a base port is 0 or 2 to 65534");
}

} // namespace

progressClient::startedDaemon progressClient::startDaemon(const std::string &identifier,
                                                          const daemonOptions &options)
{
    check(identifier, options.basePort);
    const deadline until(options.timeout);
    startTurn turn(identifier);
    for (;;) {
        if (const auto found = findDaemon(identifier))
            return {*found, true, 0};
        if (turn.take())
            break;
        if (until.isOver())
            throw error(error::reason::timedOut, "another process starts this daemon and does not get on");
        std::this_thread::sleep_for(lookInterval);
    }
    // It may have come up between the look and the turn.
    if (const auto found = findDaemon(identifier))
        return {*found, true, 0};
    removeStaleLockFile(lockFilePath(identifier));
    const pid_t process = spawnDetached(options.program, identifier, options.basePort);
    const processHandle daemon(process);
    return {waitUntilReady(identifier, daemon, until), false, process};
}

progressClient::startedDaemon progressClient::startDaemon(const std::string &identifier)
{
    return startDaemon(identifier, daemonOptions{});
}
