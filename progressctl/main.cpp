// progressctl: the command-line client.
//
// main            errors, exit statuses (common.h)
// commandLine     the words that were given, also under the names of other programs
// daemonVerbs     start, stop
// dialogVerbs     bar, update, text, button, …: one message each; configure (look.h), send
// boxVerbs        ask, assert
// eventsVerb      events
// recordsVerb     records
// pipeVerb        the options of pipe; the work is done by progressPipe, which shows in a pipeWindow what it
//                 reads with pipeInput, and runs the writer with writer.h

#include "progressctl/commandLine.h"

#include <algorithm>
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
    const bool isFine = problem.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
    const std::vector<std::string> unknown = app.remaining();
    if (isFine && app.get_subcommands().empty() && !unknown.empty()) {
        complain("there is no verb \"" + unknown.front() + "\" (see --help)");
        return statusUsage;
    }
    if (isFine)
        return app.exit(problem);
    const std::string text = problem.what();
    complain(text.substr(0, text.find('\n')) + " (see --help)");
    return statusUsage;
}

/// What was printed is worth nothing if it did not arrive.
int flushed(int status)
{
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return status;
    complain("standard output cannot be written");
    return status == statusOk || status == statusRejected ? statusFile : status;
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

int run(const std::vector<std::string> &all)
{
    CLI::App app("Shows progress windows and asks questions through the daemon progressd.", "progressctl");
    givenWords given = wordsFrom(all);
    commandLineSetup setup{app, {"user-" + std::to_string(::geteuid()), {}}, std::move(given.command)};
    // Those that collect values go on collecting.
    app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    app.footer(footer);
    app.require_subcommand(0, 1);
    app.fallthrough();
    // A script's user cannot do anything about an option that only other progress windows know.
    app.allow_extras(given.verb == "pipe");
    app.set_version_flag("--version", "progressctl " PROGRESS_VERSION);
    app.add_option("-i,--identifier", setup.common.identifier, "Identifier of the daemon")
        ->check(valueThat([](const std::string &text) { return !text.empty(); }, "is empty"))
        ->envname("PROGRESS_IDENTIFIER")
        ->default_str("user-UID");
    app.add_option("--limit", setup.common.limitSeconds, "Longest wait for the daemon, in seconds")
        ->check(secondsWithin(0.001, 86400))
        ->default_str("5");
    addDaemonVerbs(setup);
    addDialogVerbs(setup);
    addBoxVerbs(setup);
    addEventsVerb(setup);
    addPipeVerb(setup);
    addRecordsVerb(setup);
    // The parser wants the last word first.
    std::reverse(given.words.begin(), given.words.end());
    try {
        app.parse(given.words);
    } catch (const CLI::ParseError &problem) {
        return parseError(app, problem);
    }
    if (given.verb.empty()) {
        complain("a verb is missing (see --help)");
        return statusUsage;
    }
    return setup.status;
}

} // namespace

int main(int argc, char **argv)
{
    openStandardStreams();
    try {
        return flushed(run(wordsOfStandIn(argc, argv)));
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
