// Starting and ending daemons.

#include "client/daemonSocket.h"
#include "client/messageText.h"
#include "client/progressClient.h"
#include "wire/places.h"
#include "wire/words.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

using error = progressError;

constexpr std::chrono::milliseconds lookInterval{5};

/// Of several processes that want to start a daemon, the one that has this open goes ahead. The kernel takes
/// the turn back when its holder ends, and no file stays behind.
descriptor takeTurn(const std::string &folder, const deadline &until)
{
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

/// The ports of a daemon, each 0 where there is no lock file of this user's that tells them.
progressClient::ports readLockFile(const std::string &identifier)
{
    // The folder is everybody's: a pipe in the file's place must not make us wait, a link not mislead us.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    const descriptor file(::open(wire::lockFilePath(identifier).c_str(), flags));
    struct stat about = {};
    char text[64] = {};
    if (::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode) || about.st_uid != ::geteuid() ||
        ::read(file.get(), text, sizeof text - 1) <= 0)
        return {};
    const auto [command, event] = wire::portsFromText(text).value_or(wire::portNumbers());
    return {command, event};
}

/// Whether a line of the daemon's program tells nothing about why it ended: what the toolkit says in a locale
/// without UTF-8, about its folders, and behind the reason itself when there is no display.
bool isBackground(std::string_view line)
{
    for (const std::string_view part :
         {"Detected locale", "QStandardPaths:", "Could not load the Qt platform",
          "This application failed to start"}) {
        if (line.find(part) != line.npos)
            return true;
    }
    return false;
}

/// The last line that tells why a program ended; with lines of the daemon itself, of these.
std::string reasonIn(const descriptor &file)
{
    constexpr std::string_view mark = "progressd: ";
    char text[8192];
    const ssize_t got = ::pread(file.get(), text, sizeof text, 0);
    std::string_view rest(text, got > 0 ? static_cast<std::size_t>(got) : 0);
    std::string_view reason;
    while (!rest.empty()) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        line = line.substr(0, line.find_last_not_of(' ') + 1);
        const bool isMarked = wire::beginsWith(line, mark);
        if (!line.empty() && !isBackground(line) && (isMarked || !wire::beginsWith(reason, mark)))
            reason = line;
    }
    return std::string(reason);
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
    const char *named = std::getenv("PROGRESSD");
    const std::string usual = named && *named ? named : "progressd";
    const std::string &program = options.program.empty() ? usual : options.program;
    if (!options.isPrivate && options.basePort == progressClient::noBasePort)
        return {program, identifier};
    if (!options.isPrivate)
        return {program, identifier, std::to_string(options.basePort)};
    std::vector<std::string> words{program, "--private", identifier};
    if (options.learnName)
        words.insert(words.end(), {"--learn", *options.learnName});
    if (options.stays)
        words.emplace_back("--stay");
    if (options.idle.count() > 0)
        words.insert(words.end(), {"--idle", std::to_string(options.idle.count())});
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

/// Gives the process that serves.
pid_t waitUntilServing(const std::string &identifier, const processHandle &daemon, const descriptor &words,
                       const deadline &until)
{
    std::optional<daemonSocket> socket;
    // Whether it has ended is asked first: one may end because another one has begun to answer.
    for (bool hasEnded = false; !(socket = daemonSocket::find(identifier, until));
         hasEnded = daemon.hasEnded()) {
        if (hasEnded) {
            const std::string why = reasonIn(words);
            throw error(error::reason::cannotStart,
                        "the daemon ended before it was ready" + (why.empty() ? "" : ": " + why));
        }
        if (until.isOver())
            throw error(error::reason::timedOut,
                        "the daemon does not answer at " + socketPathOf(identifier) +
                            " in time (is it an older one, without a local channel?)");
        std::this_thread::sleep_for(lookInterval);
    }
    socket->finish(until);
    return socket->daemonProcess();
}

/// A daemon that nobody could use is not left behind; one that answers ends in order, with its files.
void endStarted(const std::string &identifier, pid_t process, const processHandle &daemon)
{
    const deadline moment(std::chrono::seconds(1));
    try {
        daemonSocket socket = daemonSocket::connect(identifier, moment);
        if (socket.daemonProcess() == process)
            socket.send(message(wire::messageKind::stop), moment);
        daemon.waitForEnd(moment);
    } catch (const error &) {
        // It does not answer.
    }
    daemon.signal(SIGTERM);
    daemon.waitForEnd(moment);
}

/// Of daemons that are started at the same moment one serves, and the others end.
progressClient::startedDaemon awaitDaemon(const std::string &identifier,
                                          const progressClient::daemonOptions &options, pid_t process,
                                          const descriptor &words, const deadline &until)
{
    const processHandle daemon(process);
    try {
        const pid_t serving = waitUntilServing(identifier, daemon, words, until);
        const progressClient::ports found = readLockFile(identifier);
        if (options.basePort >= 0 && (found.command == 0 || found.event == 0))
            throw error(error::reason::cannotStart,
                        "the daemon cannot listen: its port, or the next, is taken");
        const bool isOurs = serving == process || (serving == 0 && !daemon.hasEnded());
        // One that comes up late would find the place free again when the other has been stopped.
        if (!isOurs && options.isPrivate) {
            daemon.signal(SIGTERM);
            daemon.waitForEnd(until);
        }
        return {found, !isOurs, isOurs ? process : serving};
    } catch (...) {
        endStarted(identifier, process, daemon);
        throw;
    }
}

void check(const progressClient::daemonOptions &options)
{
    const auto refuseIf = [](bool isWrong, const char *why) {
        if (isWrong)
            throw error(error::reason::badArgument, why);
    };
    const int port = options.basePort;
    const bool hasPort = port != progressClient::noBasePort;
    refuseIf(hasPort && port != 0 && (port < 2 || port > 65534), "a base port is 0 or 2 to 65534");
    refuseIf(options.isPrivate && hasPort, "a private daemon has no port");
    refuseIf(options.learnName && !options.isPrivate, "only a private daemon learns under another name");
    refuseIf(options.stays && !options.isPrivate, "a daemon with ports stays by its base port");
    refuseIf(options.idle.count() != 0 && !options.stays, "only a daemon that stays has an idle time");
}

/// What a daemon says to a client that claims a slot, listens, and asks it to end. The claim tells a daemon
/// from anything else; the event "shutDown" tells one that ends from one with a base port, which ignores the
/// request.
struct farewell {
    bool isDaemon = false;
    bool ends = false;
};

/// None when the daemon went meanwhile, as where another process had asked it to end before.
std::optional<farewell> askToEnd(daemonSocket &socket, const deadline &until)
{
    // The exit is for a daemon that does not know how to stop.
    using kind = wire::messageKind;
    std::string words;
    for (const kind each : {kind::claim, kind::events, kind::stop, kind::exit})
        words += message(each);
    std::string heard;
    try {
        socket.send(words, until);
        heard = socket.finish(until);
    } catch (const error &problem) {
        if (problem.why() != error::reason::gone)
            throw;
        return std::nullopt;
    }
    farewell made;
    while (const auto one = takeReceived(heard)) {
        made.isDaemon = made.isDaemon || one->what == wire::replyKind::claimed;
        made.ends = made.ends || (one->what == wire::replyKind::event &&
                                  one->text == wire::nameOf(wire::eventKind::shutDown));
    }
    return made;
}

} // namespace

progressClient::startedDaemon progressClient::startDaemon(const std::string &identifier,
                                                          const daemonOptions &options)
{
    check(options);
    socketPathOf(identifier);
    const std::string folder = checkedSocketFolder();
    if (const std::string fault = wire::makeSocketFolder(folder); !fault.empty())
        throw error(error::reason::system, fault);
    const deadline until(options.timeout);
    // Of private ones the daemons themselves let one through.
    const descriptor turn = options.isPrivate ? descriptor() : takeTurn(folder, until);
    if (const auto serving = daemonSocket::find(identifier, until))
        return {readLockFile(identifier), true, serving->daemonProcess()};
    // What is read later is to be written later.
    if (!options.isPrivate)
        ::unlink(wire::lockFilePath(identifier).c_str());
    const descriptor words(::memfd_create("what the daemon says before it serves", MFD_CLOEXEC));
    const pid_t process = spawnDetached(commandLine(identifier, options), words.get());
    return awaitDaemon(identifier, options, process, words, until);
}

progressClient::startedDaemon progressClient::startDaemon(const std::string &identifier)
{
    return startDaemon(identifier, daemonOptions{});
}

void progressClient::stopDaemon(const std::string &identifier, milliseconds timeout)
{
    const deadline until(timeout);
    daemonSocket socket = daemonSocket::connect(identifier, until);
    // Held before it answers: the number cannot have come to mean another process.
    const processHandle daemon(socket.daemonProcess());
    // One that is stopped could not answer.
    daemon.signal(SIGCONT);
    const auto said = askToEnd(socket, until);
    if (!said) {
        if (!daemon.waitForEnd(until))
            throwGone();
        return;
    }
    if (!said->isDaemon) {
        // One that is ending may have had no time to answer.
        if (daemon.waitForEnd(deadline::earlier(deadline(milliseconds(500)), until)))
            return;
        throw error(error::reason::notOurs, "what answers at " + socketPathOf(identifier) + " is no daemon");
    }
    if (!said->ends && !daemon.signal(SIGTERM))
        throw error(error::reason::notOurs, "the daemon belongs to another user");
    if (!daemon.waitForEnd(until))
        throw error(error::reason::timedOut, "the daemon does not end in time");
}
