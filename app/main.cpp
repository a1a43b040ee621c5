// progressd: draws progress, busy and notice windows for other processes.
//
// main          command line, start-up, event loop, shutdown
// MyApplication the application object (app/MyApplication.h)
// receiver      two of them: the command server and the event server; they hold
//   CProgressDialog  the one active progress dialog (dialog/)
//   busyWidget       the busy window (widgets/)
//   QMessageBox      open boxes (server/notices.cpp)
// stats/        the runs that were learned, and the estimate that the dialog asks for
// dump          the diagnostic log, written by all (app/dump.h)

#include "app/MyApplication.h"
#include "app/commandLine.h"
#include "app/dump.h"
#include "app/lockFile.h"
#include "server/handlers.h"
#include "server/receiver.h"
#include "stats/statisticsFile.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

constexpr int usageError = 2;
constexpr char usage[] = "usage: progressd IDENTIFIER [BASEPORT]\n";

/// The daemon's identifier while its files are to be left in order at exit, else null.
const char *servedIdentifier = nullptr;

/// Answers "--help" and "--version" as the only argument, without a display.
bool printedInformation(int argc, char **argv)
{
    if (argc != 2)
        return false;
    if (std::strcmp(argv[1], "--help") == 0) {
        std::printf(
            "%s\n"
            "Shows progress, busy and notice windows on behalf of other processes. The ports of the\n"
            "command and the event server stand in /tmp/HalvornRunning_IDENTIFIER.lock.\n"
            "\n"
            "  IDENTIFIER  names the lock file and the file of learned runs\n"
            "  BASEPORT    port of the command server, the event server takes the next one; the daemon\n"
            "              then stays when its clients have gone\n"
            "  --help      prints this text\n"
            "  --version   prints the version\n",
            usage);
        return true;
    }
    if (std::strcmp(argv[1], "--version") == 0) {
        std::puts("progressd " PROGRESS_VERSION);
        return true;
    }
    return false;
}

/// Says on standard error what is wrong with the command line, if anything.
bool isUsable(const commandLine &line)
{
    if (!line.identifier) {
        std::fputs(usage, stderr);
        return false;
    }
    if (!setLockFile(line.identifier) || !statisticsPathFits(line.identifier)) {
        std::fputs("progressd: the identifier is too long\n", stderr);
        return false;
    }
    return true;
}

/// The toolkit aborts where it cannot go on, above all without a display; that is no reason for a core file.
void reportToolkitMessage(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    std::fprintf(stderr, "progressd: %s\n", qPrintable(text));
    if (type == QtFatalMsg)
        std::_Exit(EXIT_FAILURE);
}

/// Sizes and positions of the protocol are real pixels, and the daemon places its own windows, which works
/// through X11 only.
void preparePlatform()
{
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    for (const char *scaling : {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_USE_PHYSICAL_DPI"})
        qunsetenv(scaling);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QGuiApplication::setDesktopSettingsAware(false);
}

/// The files' share of the shutdown. The toolkit also ends the process by itself, when the X server goes
/// away; the files are left in order then, too.
void leaveFiles()
{
    const char *identifier = std::exchange(servedIdentifier, nullptr);
    if (!identifier)
        return;
    removeLockFile();
    receiver::saveStatisticData(identifier);
}

int serve(const commandLine &line)
{
    handlers shared;
    receiver commandServer(line.basePort, false);
    receiver eventServer(eventPort(line.basePort), true);
    QObject::connect(&commandServer, &receiver::clientGone, qApp, [&commandServer] {
        if (commandServer.hasClients())
            return;
        dump("---- doing exit by last closed connection!", 0);
        QCoreApplication::quit();
    });
    receiver::loadStatisticData(line.identifier);
    servedIdentifier = line.identifier;
    prepareDump();
    std::atexit(leaveFiles);
    writeLockFile(commandServer.getPort(), eventServer.getPort());

    const int code = MyApplication::exec();

    leaveFiles();
    receiver::cleanup();
    return code;
}

} // namespace

int main(int argc, char **argv)
{
    if (printedInformation(argc, argv))
        return EXIT_SUCCESS;
    if (!isUsable(parseCommandLine(argc, argv)))
        return usageError;

    qInstallMessageHandler(reportToolkitMessage);
    preparePlatform();
    MyApplication application(argc, argv);
    // The toolkit has taken its own options out of the arguments.
    const commandLine line = parseCommandLine(argc, argv);
    if (!isUsable(line))
        return usageError;
    return serve(line);
}
