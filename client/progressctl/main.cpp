// progressctl: the command-line client.
//
// main            command line, errors, exit statuses
// daemonVerbs     start, stop
// dialogVerbs     bar, update, text, button, …: one message each; send
// configureVerb   configure; the themes (theme.h)
// boxVerbs        ask, assert; the buttons' names (buttonNames.h)
// eventsVerb      events
// pipeVerb        the options of pipe; the work is done by progressPipe (progressPipe.h), which reads its
// input
//                 with pipeInput and runs or ends the writer with writer.h
// recordsVerb     records; the file (runRecords.h) and the picture (recordsPlot.h)

#include "client/progressctl/exitStatus.h"
#include "client/progressctl/verbs.h"

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr char footer[] =
    "\nExit status: 0 done or accepted, 1 rejected or cancelled, 2 wrong usage, 3 no daemon,\n"
    "4 daemon gone half-way, 5 no answer in time, 6 input incomplete, 7 file, 8 system.";

int statusOf(progressClient::error::reason why)
{
    using reason = progressClient::error::reason;
    switch (why) {
    case reason::badArgument:
        return statusUsage;
    case reason::notRunning:
    case reason::cannotStart:
    case reason::notOurs:
        return statusNoDaemon;
    case reason::gone:
        return statusGone;
    case reason::timedOut:
        return statusTimedOut;
    case reason::system:
        break;
    }
    return statusInternal;
}

int parseError(CLI::App &app, const CLI::ParseError &problem)
{
    if (problem.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success))
        return app.exit(problem);
    const std::string text = problem.what();
    complain(text.substr(0, text.find('\n')) + " (see --help)");
    return statusUsage;
}

/// A standard stream that was closed would give its number to the next file or socket, which would then pass
/// for the stream.
void openStandardStreams()
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", stream == STDIN_FILENO ? O_RDONLY : O_WRONLY);
    }
}

int run(int argc, char **argv)
{
    CLI::App app("Shows progress windows and asks questions through the daemon progressd.", "progressctl");
    commandLineSetup setup{app, {}, {}};
    app.footer(footer);
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.set_version_flag("--version", "progressctl " PROGRESS_VERSION);
    app.add_option("-i,--identifier", setup.common.identifier, "Identifier of the daemon")
        ->envname("PROGRESS_IDENTIFIER")
        ->default_str("user-UID");
    app.add_option("--limit", setup.common.limitSeconds, "Longest wait for the daemon, in seconds")
        ->check(CLI::Range(0.001, 86400.0))
        ->capture_default_str();
    addDaemonVerbs(setup);
    addDialogVerbs(setup);
    addConfigureVerb(setup);
    addBoxVerbs(setup);
    addEventsVerb(setup);
    addPipeVerb(setup);
    addRecordsVerb(setup);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &problem) {
        return parseError(app, problem);
    }
    if (!setup.chosen) {
        complain("a verb is missing (see --help)");
        return statusUsage;
    }
    if (setup.common.identifier.empty())
        setup.common.identifier = "user-" + std::to_string(::geteuid());
    return setup.chosen();
}

} // namespace

int actOnce(const commonOptions &common, const std::function<void(progressClient &)> &act)
{
    progressClient client(common.identifier, progressClient::channels::commands, common.limit());
    act(client);
    client.finish();
    return statusOk;
}

void complain(const std::string &text)
{
    std::fprintf(stderr, "progressctl: %s\n", text.c_str());
}

int main(int argc, char **argv)
{
    openStandardStreams();
    try {
        return run(argc, argv);
    } catch (const progressClient::error &problem) {
        complain(problem.what());
        return statusOf(problem.why());
    } catch (const failure &problem) {
        complain(problem.what());
        return problem.status();
    } catch (const std::exception &problem) {
        complain(problem.what());
        return statusInternal;
    }
}
