// progressd: draws progress, busy and notice windows for other processes.
//
// main             command line, standard streams, the toolkit's platform
// serve            start-up, event loop and shutdown (app/serve.h); it holds
//   handlers         what messages act on, whichever way they came (server/)
//     activeDialog     the one progress dialog (dialog/) and the busy window (widgets/)
//     noticeBoxes      the open boxes
//     eventListeners   who hears events
//   lifespan         when the daemon ends by what clients do
//   receiver         two of them: the command server and the event server
//   localSocket      the local socket, where this user's own processes come in
//   localServer      its channels
// MyApplication    the application object (app/MyApplication.h), with endSignals, the signals that end a
//                  private daemon in order
// x11Input         keys and presses before the toolkit sees them (platform/x11Input.h)
// toolkitWords     the toolkit's words in the user's language (app/toolkitWords.h, language/)
// stats/           the runs that were learned, and the estimate that the dialog asks for
// dump             the diagnostic log, written by all (log/dump.h)

#include "app/MyApplication.h"
#include "app/commandLine.h"
#include "app/lockFile.h"
#include "app/serve.h"
#include "app/standardError.h"
#include "app/toolkitWords.h"
#include "dialog/screenReader.h"
#include "language/language.h"
#include "platform/sessionBus.h"
#include "platform/windowSystem.h"
#include "platform/x11Input.h"
#include "server/localSocket.h"
#include "stats/statisticsFile.h"
#include "widgets/appearance.h"

#include <QIcon>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

constexpr int usageError = 2;
constexpr char usage[] = "usage: progressd IDENTIFIER [BASEPORT]\n"
                         "       progressd --private IDENTIFIER [--learn NAME] [--log FILE]\n"
                         "                 [--stay [--idle SECONDS]]\n";
constexpr char help[] =
    "\n"
    "Shows progress, busy and notice windows on behalf of other processes.\n"
    "\n"
    "Two ways lead in. The local socket, IDENTIFIER.sock in $XDG_RUNTIME_DIR/progressd (else in\n"
    "/run/user/UID or /tmp), serves only processes of the same user, takes UTF-8 and up to 64\n"
    "clients with a buffer each: choose it for whatever is written today. The two TCP ports, which stand in\n"
    "/tmp/HalvornRunning_IDENTIFIER.lock, are open to every process of the machine, take Latin-1 and\n"
    "ten clients: they are for programs that know only them. Start the daemon with --private unless one\n"
    "of these is to be served.\n"
    "\n"
    "  IDENTIFIER    names the socket, the lock file and the file of learned runs\n"
    "  BASEPORT      port of the command server, the event server takes the next one; the daemon\n"
    "                then stays when its clients have gone\n"
    "  --private     opens no port and writes no lock file\n"
    "  --learn NAME  keeps the learned runs under NAME instead; with an empty one, not at all\n"
    "  --log FILE    logs there, or where PROGRESSD_LOG says; without either a private daemon\n"
    "                keeps no log\n"
    "  --stay        does not end with its last client, but when progressctl stop ends it\n"
    "  --idle SECONDS  or when it has had no client for so long\n"
    "  --help        prints this text\n"
    "  --version     prints the version\n"
    "\n"
    "A private daemon that does not stay also ends when no client has come within 30 seconds.\n"
    "SIGTERM, SIGINT and SIGHUP end a private daemon in order; one with ports runs no shutdown\n"
    "and leaves its lock file behind: end it with progressctl stop.\n"
    "\n"
    "Exit status: 0 ended in order, 1 cannot start (no display, something else in the lock file's\n"
    "place, a daemon that answers on the private one's socket) or the display was lost, 2 wrong\n"
    "command line or no socket for a private daemon, 128+N a private one ended in order by signal N.\n";

/// Answers "--help" and "--version" as the only argument, without a display.
bool printedInformation(int argc, char **argv)
{
    if (argc != 2)
        return false;
    if (std::strcmp(argv[1], "--help") == 0)
        std::printf("%s%s", usage, help);
    else if (std::strcmp(argv[1], "--version") == 0)
        std::puts("progressd " PROGRESS_VERSION);
    else
        return false;
    return true;
}

/// Says on standard error what is wrong with the command line, if anything.
bool isUsable(const commandLine &line)
{
    if (!line.identifier) {
        std::fputs(usage, stderr);
        return false;
    }
    const bool lockFits = line.isPrivate || lockFile(line.identifier).fits();
    if (!lockFits || (line.statisticsName && !statisticsPathFits(line.statisticsName))) {
        complain("the identifier is too long");
        return false;
    }
    return true;
}

/// Sizes and positions of the protocol are real pixels, so only the fitted layout is as large as the user
/// wishes. The daemon places its own windows, which works through X11 only: Wayland is for where there is
/// nothing else.
void preparePlatform()
{
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    // An image is as large as its file says, also one that is named "x@2x.png".
    qputenv("QT_HIGHDPI_DISABLE_2X_IMAGE_LOADING", "1");
    if (const double scale = qEnvironmentVariable("QT_SCALE_FACTOR").toDouble(); scale > 0)
        appearance.m_scale = std::clamp(scale, 0.5, 4.0);
    for (const char *scaling : {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_USE_PHYSICAL_DPI"})
        qunsetenv(scaling);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", qEnvironmentVariableIsEmpty("DISPLAY") ? "wayland;xcb" : "xcb;wayland");
    // While there are no threads.
    isTranslated();
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QGuiApplication::setDesktopSettingsAware(false);
    QIcon::setFallbackThemeName(QStringLiteral("hicolor"));
    QGuiApplication::setDesktopFileName(QStringLiteral("progressd"));
}

} // namespace

int main(int argc, char **argv)
{
    secureStandardStreams();
    if (printedInformation(argc, argv))
        return std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
    const commandLine given = parseCommandLine(argc, argv);
    // The toolkit's own options may stand behind a private daemon's.
    if (!given.isPrivate && !isUsable(given))
        return usageError;

    reportToolkitMessages(cannotServe(given));
    settleLocalFolder();
    preparePlatform();
    sessionBus::instance().open();
    MyApplication application(argc, argv);
    const x11Input input;
    const toolkitWords words;
    describeToScreenReaders();
    // The toolkit has taken its own options out of the arguments.
    const commandLine line = parseCommandLine(argc, argv);
    if (!isUsable(line))
        return usageError;
    const int status = serve(line);
    // Two threads of the toolkit's read from the compositor; when they are to end, one may wait for ever for
    // the other, which has gone.
    if (onWayland())
        std::_Exit(status);
    return status;
}
