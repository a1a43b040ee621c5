#include "client/progressClient.h"

#include "client/descriptor.h"
#include "client/localSocket.h"
#include "client/lockFile.h"
#include "client/processHandle.h"
#include "client/socketPath.h"
#include "client/waiting.h"
#include "wire/places.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

using error = progressClient::error;

constexpr std::chrono::milliseconds lookInterval{5};

/// Of several processes that want to start a daemon, the one that has this open goes ahead. The kernel takes
/// the turn back when its holder ends, and no file stays behind.
descriptor takeTurn(const deadline &until)
{
    const std::string folder = wire::socketFolder();
    descriptor turn(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    while (::flock(turn.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK)
            throw error(error::reason::system, systemText("no turn in " + folder));
        if (until.isOver())
            throw error(error::reason::timedOut, "another process starts a daemon and does not get on");
        std::this_thread::sleep_for(lookInterval);
    }
    return turn;
}

std::string firstLineOf(const descriptor &file)
{
    char text[512];
    const ssize_t got = ::pread(file.get(), text, sizeof text, 0);
    const std::string_view all(text, got > 0 ? static_cast<std::size_t>(got) : 0);
    const std::string_view line = all.substr(0, all.find('\n'));
    return std::string(line.substr(0, line.find_last_not_of(' ') + 1));
}

/// What the new process tells its starter through a pipe that closes when the program is running.
struct startReport {
    pid_t process = 0;
    int failure = 0; ///< errno of the attempt to run the program
};

void redirectStreams(int errors)
{
    const int null = ::open("/dev/null", O_RDWR);
    ::dup2(errors >= 0 ? errors : null, STDERR_FILENO);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO})
        ::dup2(null, stream);
}

/// In the daemon's process. Only calls that are allowed between fork and exec in a program with threads.
[[noreturn]] void runProgram(int reportFd, int errors, char *const *arguments)
{
    startReport report;
    report.process = ::getpid();
    ::setsid();
    redirectStreams(errors);
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

std::vector<std::string> commandLine(const std::string &identifier,
                                     const progressClient::daemonOptions &options)
{
    if (!options.isPrivate && options.basePort == progressClient::noBasePort)
        return {options.program, identifier};
    if (!options.isPrivate)
        return {options.program, identifier, std::to_string(options.basePort)};
    std::vector<std::string> words{options.program, "--private", identifier};
    if (options.learnName)
        words.insert(words.end(), {"--learn", *options.learnName});
    return words;
}

/// A child that is gone at once makes its own child nobody's: the daemon is no child of the caller, who need
/// not wait for it.
pid_t spawnDetached(std::vector<std::string> words, int errors)
{
    std::vector<char *> arguments;
    for (std::string &each : words)
        arguments.push_back(each.data());
    arguments.push_back(nullptr);
    int reportPipe[2];
    if (::pipe2(reportPipe, O_CLOEXEC) != 0)
        throw error(error::reason::system, systemText("no pipe"));
    // A number below 3 would be overwritten with the streams.
    const int reportFd = ::fcntl(reportPipe[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    ::close(reportPipe[1]);

    const pid_t child = ::fork();
    if (child == 0) {
        if (::fork() == 0)
            runProgram(reportFd, errors, arguments.data());
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
        throw error(error::reason::cannotStart, systemText("cannot run " + words.front()));
    }
    return report.process;
}

void waitUntilServing(const std::string &identifier, const processHandle &daemon, const descriptor &words,
                      const deadline &until)
{
    while (!answers(identifier, until)) {
        if (daemon.hasEnded()) {
            const std::string why = firstLineOf(words);
            throw error(error::reason::cannotStart,
                        "the daemon ended before it was ready" + (why.empty() ? "" : ": " + why));
        }
        if (until.isOver())
            throw error(error::reason::timedOut,
                        "the daemon does not answer at " + ::socketPath(identifier) +
                            " in time (is it an older one, without a local channel?)");
        std::this_thread::sleep_for(lookInterval);
    }
    localSocket::connect(identifier, until).finish(until);
}

/// A daemon that nobody could use is not left behind.
progressClient::ports awaitDaemon(const std::string &identifier, const progressClient::daemonOptions &options,
                                  const processHandle &daemon, const descriptor &words, const deadline &until)
{
    try {
        waitUntilServing(identifier, daemon, words, until);
        const auto found = readLockFile(identifier).value_or(progressClient::ports{});
        if (options.basePort >= 0 && (found.command == 0 || found.event == 0))
            throw error(error::reason::cannotStart,
                        "the daemon cannot listen: its port, or the next, is taken");
        return found;
    } catch (...) {
        daemon.signal(SIGTERM);
        daemon.waitForEnd(until);
        throw;
    }
}

void check(const progressClient::daemonOptions &options)
{
    const int port = options.basePort;
    if (port != progressClient::noBasePort && port != 0 && (port < 2 || port > 65534))
        throw error(error::reason::badArgument, "a base port is 0 or 2 to 65534");
    if (options.isPrivate && port != progressClient::noBasePort)
        throw error(error::reason::badArgument, "a private daemon has no port");
}

} // namespace

progressClient::startedDaemon progressClient::startDaemon(const std::string &identifier,
                                                          const daemonOptions &options)
{
    check(options);
    ::socketPath(identifier);
    makeSocketFolder();
    checkSocketFolder();
    const deadline until(options.timeout);
    // Of private ones the daemons themselves let one through.
    const descriptor turn = options.isPrivate ? descriptor() : takeTurn(until);
    if (answers(identifier, until))
        return {readLockFile(identifier).value_or(ports{}), true, 0};
    if (!options.isPrivate)
        removeLockFile(identifier);
    const descriptor words(::memfd_create("what the daemon says before it serves", MFD_CLOEXEC));
    const pid_t process = spawnDetached(commandLine(identifier, options), words.get());
    const processHandle daemon(process);
    const ports found = awaitDaemon(identifier, options, daemon, words, until);
    if (daemon.hasEnded())
        return {found, true, 0};
    return {found, false, process};
}

progressClient::startedDaemon progressClient::startDaemon(const std::string &identifier)
{
    return startDaemon(identifier, daemonOptions{});
}
