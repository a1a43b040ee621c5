#include "progressctl/commandLine.h"
#include "progressctl/look.h"
#include "progressctl/texts.h"

#include <cstdio>
#include <memory>

namespace
{

struct startArguments {
    int basePort = 0;
    lookOptions look;
};

/// A daemon that is started by a command has no client that stays: it gets a base port (0 stands for any), or
/// it would end as soon as the first command had hung up.
int start(const commonOptions &common, const startArguments &arguments)
{
    settingEntries look = loadLook(arguments.look);
    look.insert(look.begin(), {"windowTitle", oneLine(common.identifier)});
    progressClient::daemonOptions options;
    options.basePort = arguments.basePort;
    options.timeout = common.startLimit();
    const auto started = progressClient::startDaemon(common.identifier, options);
    const auto [command, event] = started.daemonPorts;
    if (started.wasRunning)
        complain("the daemon \"" + common.identifier + "\" already runs");
    else
        actOnce(common, [&look](progressClient &client) { client.configure(look); });
    std::printf("%d %d\n", command, event);
    if (arguments.basePort != 0 && arguments.basePort != command)
        throw failure(statusNoDaemon, "its base port is " + std::to_string(command) + ", not " +
                                          std::to_string(arguments.basePort));
    return statusOk;
}

void addStart(commandLineSetup &setup)
{
    auto given = std::make_shared<startArguments>();
    auto *verb =
        setup.app.add_subcommand("start", "Starts the daemon, if it does not run, and prints its ports");
    verb->add_option("PORT", given->basePort, "Command port; the event port is the next. 0: any")
        ->check(CLI::Range(0, 65534))
        ->capture_default_str();
    addLookOptions(*verb, given->look);
    verb->callback(
        [&setup, given] { setup.chosen = [&setup, given] { return start(setup.common, *given); }; });
}

void addStop(commandLineSetup &setup)
{
    auto *verb = setup.app.add_subcommand("stop", "Ends the daemon");
    verb->callback([&setup] {
        setup.chosen = [&setup] {
            progressClient::stopDaemon(setup.common.identifier, setup.common.limit());
            return statusOk;
        };
    });
}

} // namespace

void addDaemonVerbs(commandLineSetup &setup)
{
    addStart(setup);
    addStop(setup);
}
