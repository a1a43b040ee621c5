// progressctl: the command-line client.
//
// main            command line (words.h), errors, exit statuses
// daemonVerbs     start, stop
// dialogVerbs     bar, update, text, button, …: one message each; send
// configureVerb   configure; the keys and their values (settings.h), the looks (theme.h)
// boxVerbs        ask, assert; the buttons' names (buttonNames.h)
// eventsVerb      events
// pipeVerb        the options of pipe; the work is done by progressPipe, which shows in a pipeWindow what it
// reads
//                 with pipeInput, and runs or ends the writer with writer.h
// recordsVerb     records; the file (runRecords.h) and the picture (recordsPlot.h)
// completeVerb    what shells complete

#include "progressctl/exitStatus.h"
#include "progressctl/verbs.h"
#include "progressctl/words.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
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

/// Of an option that is given again, the last one counts; those that collect values go on collecting.
void takeLast(CLI::App &verb)
{
    for (CLI::Option *each : verb.get_options()) {
        if (!each->get_positional() && each->get_items_expected_max() <= 1)
            each->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    }
}

int run(int argc, char **argv)
{
    CLI::App app("Shows progress windows and asks questions through the daemon progressd.", "progressctl");
    givenWords given = wordsFrom(argc, argv);
    commandLineSetup setup{app, {}, std::move(given.command), {}};
    app.footer(footer);
    app.require_subcommand(0, 1);
    app.fallthrough();
    app.set_version_flag("--version", "progressctl " PROGRESS_VERSION);
    auto *identifier = app.add_option("-i,--identifier", setup.common.identifier, "Identifier of the daemon");
    identifier->envname("PROGRESS_IDENTIFIER")->default_str("user-UID");
    app.add_option("--limit", setup.common.limitSeconds, "Longest wait for the daemon, in seconds")
        ->check(secondsWithin(0.001, 86400))
        ->default_str("5");
    addDaemonVerbs(setup);
    addDialogVerbs(setup);
    addConfigureVerb(setup);
    addBoxVerbs(setup);
    addEventsVerb(setup);
    addPipeVerb(setup);
    addRecordsVerb(setup);
    addCompleteVerb(setup);
    takeLast(app);
    for (CLI::App *verb : app.get_subcommands({}))
        takeLast(*verb);
    // The parser wants the last word first.
    std::reverse(given.words.begin(), given.words.end());
    try {
        app.parse(given.words);
    } catch (const CLI::ParseError &problem) {
        return parseError(app, problem);
    }
    if (!setup.chosen) {
        complain("a verb is missing (see --help)");
        return statusUsage;
    }
    if (identifier->count() > 0 && setup.common.identifier.empty()) {
        complain("--identifier is empty");
        return statusUsage;
    }
    if (setup.common.identifier.empty())
        setup.common.identifier = "user-" + std::to_string(::geteuid());
    return setup.chosen();
}

} // namespace

int actOnce(const commonOptions &common, const std::function<void(progressClient &)> &act)
{
    progressClient client(common.identifier, common.limit());
    act(client);
    client.finish();
    return statusOk;
}

CLI::Validator secondsWithin(double least, double most)
{
    const auto check = [=](const std::string &text) {
        char *end = nullptr;
        const double number = std::strtod(text.c_str(), &end);
        // A number that is none is within nothing.
        const bool isWithin = !text.empty() && *end == '\0' && number >= least && number <= most;
        return isWithin ? std::string() : "\"" + text + "\" is no number of seconds";
    };
    return {check, "SECONDS", "seconds"};
}

CLI::Validator oneOf(const std::vector<std::string> &words, bool isNumbered)
{
    const auto check = [=](std::string &text) {
        const std::string wanted = isNumbered ? CLI::detail::to_lower(text) : text;
        const auto found = std::find(words.begin(), words.end(), wanted);
        if (found == words.end())
            return '"' + text + "\" is none of " + CLI::detail::join(words, ", ");
        if (isNumbered)
            text = std::to_string(found - words.begin());
        return std::string();
    };
    return {check, "", "words"};
}

void complain(const std::string &text)
{
    std::fprintf(stderr, "progressctl: %s\n", text.c_str());
}

int main(int argc, char **argv)
{
    openStandardStreams();
    try {
        return flushed(run(argc, argv));
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
