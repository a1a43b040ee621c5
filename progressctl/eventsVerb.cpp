#include "client/waiting.h"
#include "progressctl/commandLine.h"

#include <csignal>
#include <poll.h>
#include <unistd.h>

namespace
{

using event = progressClient::event;

/// False when nobody reads any more.
bool print(const std::string &text)
{
    const std::string line = text + '\n';
    return ::write(STDOUT_FILENO, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

/// Until the daemon ends, or until the reader of our output has gone.
void printEvents(progressClient &client, const commonOptions &common)
{
    const int silence = deadline(common.limit() / 2).leftForPoll();
    bool goOn = true;
    while (goOn) {
        // Nothing is asked of the output but to say that its reader has gone.
        pollfd both[] = {{client.fd(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
        const int found = ::poll(both, 2, silence);
        if (found == 0)
            client.checkAlive();
        if (found <= 0)
            continue;
        if (both[1].revents & (POLLERR | POLLNVAL))
            break;
        client.handleEvents([&goOn](const event &each) {
            goOn = goOn && print(each.text) && each.what != event::kind::shutDown;
        });
    }
}

void listen(const commonOptions &common)
{
    std::signal(SIGPIPE, SIG_IGN);
    progressClient client(common.identifier, common.limit());
    client.listen();
    client.checkAlive();
    const processHandle daemon(client.daemonProcess());
    try {
        printEvents(client, common);
    } catch (const progressClient::error &problem) {
        // One that was killed says nothing.
        const deadline moment(std::chrono::milliseconds(500));
        if (problem.why() != progressClient::error::reason::gone || !daemon.waitForEnd(moment))
            throw;
    }
}

} // namespace

void addEventsVerb(commandLineSetup &setup)
{
    auto *verb = setup.app.add_subcommand("events", "Prints the events, one a line, until the daemon ends");
    verb->callback([&setup] { listen(setup.common); });
}
