#include "app/standardError.h"

#include "log/dump.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QMessageLogContext>
#include <QString>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <string>

namespace
{

constexpr qsizetype longestMessage = 500; // characters
constexpr int messagesASecond = 10;

int statusOfFailure = EXIT_FAILURE;

bool takesText()
{
    pollfd error{STDERR_FILENO, POLLOUT, 0};
    return poll(&error, 1, 0) == 1 && (error.revents & POLLOUT);
}

void replaceStandardError(const char *path, int flags)
{
    const int file = open(path, O_WRONLY | O_NOCTTY | O_CLOEXEC | flags);
    if (file < 0)
        return;
    dup2(file, STDERR_FILENO);
    close(file);
}

/// Libraries write to it without asking. The pipe is opened a second time, because not to wait is a property
/// of what was opened, which the starter shares.
void stopWaiting()
{
    struct stat about;
    if (fstat(STDERR_FILENO, &about) == 0 && S_ISFIFO(about.st_mode))
        replaceStandardError("/proc/self/fd/2", O_NONBLOCK);
    else if (!takesText())
        replaceStandardError("/dev/null", 0);
}

/// Whether the second at hand has room for one more.
bool isWorthARecord()
{
    using clock = std::chrono::steady_clock;
    static clock::time_point second;
    static int count = 0;
    const auto now = clock::now();
    if (now - second >= std::chrono::seconds(1)) {
        if (count > messagesASecond)
            dump("---- toolkit messages left out", count - messagesASecond);
        second = now;
        count = 0;
    }
    return ++count <= messagesASecond;
}

void complainAbout(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    // What is wrong with a folder for sockets is said by who opens one.
    if (!text.startsWith(QLatin1String("QStandardPaths: runtime directory")))
        complain(text.toLocal8Bit().toStdString());
    if (type != QtFatalMsg)
        return;
    // All that the toolkit cannot do without. It names its plugins; the last line names the cause.
    complain("no display can be used: DISPLAY is \"" + qgetenv("DISPLAY").toStdString() +
             "\", WAYLAND_DISPLAY \"" + qgetenv("WAYLAND_DISPLAY").toStdString() + "\"");
    std::_Exit(statusOfFailure);
}

/// A font's description or an image of a client's that cannot be used has no effect, and is no news.
bool isAboutSettings(const QMessageLogContext &context, const QString &text)
{
    return text.startsWith(QLatin1String("QFont::")) ||
           QByteArrayView(context.category).startsWith("qt.gui.imageio");
}

/// The toolkit's threads come here, too; a message that comes while another is written is lost.
void log(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    static std::atomic_flag isBusy;
    if (!isAboutSettings(context, text) && !isBusy.test_and_set()) {
        if (isWorthARecord())
            dump(("---- toolkit: " + text.left(longestMessage).simplified()).toLatin1().constData(), type);
        isBusy.clear();
    }
    if (type == QtFatalMsg)
        std::exit(EXIT_FAILURE);
}

} // namespace

void secureStandardStreams()
{
    std::signal(SIGPIPE, SIG_IGN);
    int file;
    do
        file = open("/dev/null", O_RDWR | O_CLOEXEC);
    while (file >= 0 && file <= STDERR_FILENO);
    close(file);
    stopWaiting();
}

void complain(std::string_view text)
{
    std::string line = "progressd: ";
    line.append(text.substr(0, PIPE_BUF / 2)).append("\n");
    if (takesText()) [[maybe_unused]]
        const ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

void reportToolkitMessages(int failureStatus)
{
    statusOfFailure = failureStatus;
    qInstallMessageHandler(complainAbout);
}

void logToolkitMessages()
{
    qInstallMessageHandler(log);
    // What it says while it takes itself apart would find nothing whole that a record needs.
    std::atexit(
        [] { qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {}); });
    replaceStandardError("/dev/null", 0);
}
