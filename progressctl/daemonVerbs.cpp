#include "progressctl/commandLine.h"
#include "progressctl/texts.h"

#include <cstdio>
#include <memory>

namespace
{

struct startArguments {
    std::optional<int> basePort; ///< 0: any
    int idleSeconds = 0;
    lookOptions look;
};

/// A daemon that is started by a command has no client that stays, so it is to stay by itself: it would end
/// as soon as the first command had hung up.
progressClient::daemonOptions optionsFor(const commonOptions &common, const startArguments &arguments)
{
    progressClient::daemonOptions options;
    options.timeout = common.startLimit();
    if (arguments.basePort) {
        options.basePort = *arguments.basePort;
    } else {
        options.isPrivate = options.stays = true;
        options.idle = std::chrono::seconds(arguments.idleSeconds);
    }
    return options;
}

void start(const commonOptions &common, const startArguments &arguments)
{
    settingEntries look = loadLook(arguments.look);
    look.insert(look.begin(), {"windowTitle", oneLine(common.identifier)});
    const auto started = progressClient::startDaemon(common.identifier, optionsFor(common, arguments));
    const auto [command, event] = started.daemonPorts;
    if (started.wasRunning)
        complain("the daemon \"" + common.identifier + "\" already runs");
    else
        actOnce(common, [&look](progressClient &client) { client.configure(look); });
    if (!arguments.basePort)
        return;
    std::printf("%d %d\n", command, event);
    if (command == 0 || (*arguments.basePort != 0 && *arguments.basePort != command))
        throw failure(statusNoDaemon, "its base port is " + std::to_string(command) + ", not " +
                                          std::to_string(*arguments.basePort));
}

} // namespace

void addDaemonVerbs(commandLineSetup &setup)
{
    auto given = std::make_shared<startArguments>();
    auto *verb = setup.app.add_subcommand("start", "Starts the daemon, if it does not run");
    auto *ports = verb->add_option("--ports,PORT", given->basePort,
                                   "Also opens TCP ports and prints them: PORT and the next; 0: any");
    ports->check(CLI::Range(0, 65534))->type_name("PORT");
    verb->add_option("--idle", given->idleSeconds, "Ends without clients for so many SECONDS; else it stays")
        ->check(CLI::Range(1, 2'000'000))
        ->excludes(ports);
    addLookOptions(*verb, given->look);
    verb->callback([&setup, given] { start(setup.common, *given); });
    setup.app.add_subcommand("stop", "Ends the daemon")->callback([&setup] {
        progressClient::stopDaemon(setup.common.identifier, setup.common.limit());
    });
}
