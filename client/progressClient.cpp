#include "client/progressClient.h"

#include "client/channelSocket.h"
#include "client/listeningSocket.h"
#include "client/lockFile.h"
#include "client/protocolText.h"

#include <cstring>

namespace
{

using error = progressClient::error;

/// An event is short; what goes on without an end is no daemon.
constexpr std::size_t longestEvent = 64 * 1024;

void checkSlot(int slot)
{
    if (slot < 0 || slot >= progressClient::slots)
        throw error(error::reason::badArgument, "slots run from 0 to 9, there is no " + std::to_string(slot));
}

progressClient::ports portsOf(const std::string &identifier)
{
    const std::string path = progressClient::lockFilePath(identifier);
    const auto found = readLockFile(path);
    if (!found)
        throw error(error::reason::notRunning,
                    "no daemon \"" + identifier + "\" is running (no lock file " + path + ")");
    return *found;
}

} // namespace

struct progressClient::connection {
    int eventPort = 0;
    int commandPort = 0;
    milliseconds timeout{};
    channelSocket commands;
    /// Progress commands may still be on their way through `commands`.
    bool sentProgress = false;
    channelSocket events;
    std::string eventBytes; ///< what has come of events and was not taken yet

    deadline limit() const { return deadline(timeout); }
    channelSocket &openEvents()
    {
        if (!events.isOpen())
            throw error(error::reason::badArgument, "this client has no event channel");
        return events;
    }
    bool readEvents(const deadline &until);
};

/// Waits for more of the event channel; false when the time is up.
bool progressClient::connection::readEvents(const deadline &until)
{
    char buffer[4096];
    const std::size_t got = openEvents().receive(buffer, sizeof buffer, until);
    eventBytes.append(buffer, got);
    if (eventBytes.size() > longestEvent)
        throw error(error::reason::gone, "what comes on the event port are no events");
    return got > 0;
}

std::string progressClient::lockFilePath(const std::string &identifier)
{
    return "/tmp/HalvornRunning_" + identifier + ".lock";
}

std::optional<progressClient::ports> progressClient::findDaemon(const std::string &identifier)
{
    const auto found = readLockFile(lockFilePath(identifier));
    if (found && findListener(found->command) && findListener(found->event))
        return found;
    return std::nullopt;
}

progressClient::progressClient(const std::string &identifier, channels wanted, milliseconds timeout)
    : progressClient(portsOf(identifier), wanted, timeout)
{
}

progressClient::progressClient(const ports &daemonPorts, channels wanted, milliseconds timeout)
    : m_connection(std::make_unique<connection>())
{
    m_connection->commandPort = daemonPorts.command;
    m_connection->eventPort = daemonPorts.event;
    m_connection->timeout = timeout;
    const deadline until = m_connection->limit();
    if (wanted != channels::events)
        m_connection->commands = channelSocket::connect(daemonPorts.command, until);
    if (wanted != channels::commands)
        m_connection->events = channelSocket::connect(daemonPorts.event, until);
}

progressClient::progressClient(progressClient &&) noexcept = default;
progressClient &progressClient::operator=(progressClient &&) noexcept = default;
progressClient::~progressClient() = default;

void progressClient::send(std::string_view message)
{
    if (!m_connection->commands.isOpen())
        throw error(error::reason::badArgument, "this client has no command channel");
    m_connection->commands.send(message, m_connection->limit());
}

/// Of the messages that arrive together, the daemon handles progress commands last, and each message drops
/// those in front of it: another kind right behind them would wipe them out. On a channel of its own it
/// cannot.
void progressClient::sendBehindProgress(std::string_view message)
{
    if (m_connection->sentProgress && m_connection->commands.isOpen()) {
        m_connection->commands = channelSocket::connect(m_connection->commandPort, m_connection->limit());
        m_connection->sentProgress = false;
    }
    send(message);
}

void progressClient::finish()
{
    if (m_connection->commands.isOpen())
        m_connection->commands.finish(m_connection->limit());
}

void progressClient::progress(std::string_view keyword)
{
    send(message("progress", keyword));
    m_connection->sentProgress = true;
}

void progressClient::progress(std::string_view keyword, int slot)
{
    checkSlot(slot);
    progress(std::string(keyword) + std::to_string(slot));
}

void progressClient::progress(std::string_view keyword, int slot, std::string_view text)
{
    checkSlot(slot);
    progress(std::string(keyword) + std::to_string(slot) + ';' + carried("a text", text, ";"));
}

void progressClient::createBar(int slot, std::string_view caption)
{
    progress("create:", slot, caption);
}

void progressClient::updateBar(int slot, int percent)
{
    if (percent != givenUp && (percent < 0 || percent > 100))
        throw error(error::reason::badArgument,
                    "a percent is 0 to 100, or -1 for a bar that is given up, not " +
                        std::to_string(percent));
    progress("update:", slot, std::to_string(percent));
}

void progressClient::removeBar(int slot)
{
    progress("remove:", slot);
}

void progressClient::createText(int slot, std::string_view text)
{
    progress("addText:", slot, text);
}

void progressClient::updateText(int slot, std::string_view text)
{
    progress("updateText:", slot, text);
}

void progressClient::removeText(int slot)
{
    progress("delText:", slot);
}

void progressClient::addButton(int slot, std::string_view label)
{
    progress("addButt:", slot, label);
}

void progressClient::removeButton(int slot)
{
    progress("delButt:", slot);
}

void progressClient::activate()
{
    progress("activate");
}

void progressClient::messageStart()
{
    progress("messageStart");
}

void progressClient::messageStop()
{
    progress("messageStop");
}

void progressClient::busyOn()
{
    progress("busyOn");
}

void progressClient::busyOff()
{
    progress("busyOff");
}

void progressClient::configure(const std::vector<std::pair<std::string, std::string>> &entries)
{
    std::string payload;
    for (const auto &[key, value] : entries) {
        payload += carried("a key", key, ";") + '=' + carried("a value", value, ";") + ';';
    }
    sendBehindProgress(message("configuration", payload));
}

progressClient::button progressClient::ask(const question &box, milliseconds timeout)
{
    sendBehindProgress(message("msgbox", boxPayload(box)));
    return answer(timeout);
}

progressClient::button progressClient::reportAssertion(std::string_view text, milliseconds timeout)
{
    sendBehindProgress(message("assert", carried("an assertion", text)));
    return answer(timeout);
}

/// Four bytes in the machine's order on the channel that asked.
progressClient::button progressClient::answer(milliseconds timeout)
{
    const deadline until(timeout);
    char bytes[4];
    std::size_t have = 0;
    while (have < sizeof bytes) {
        const std::size_t got = m_connection->commands.receive(bytes + have, sizeof bytes - have, until);
        if (got == 0) {
            // The box may still be answered; on this channel that would pass for the next box's answer.
            m_connection->commands = channelSocket::connect(m_connection->commandPort, m_connection->limit());
            throw error(error::reason::timedOut, "nobody answers the box in time");
        }
        have += got;
    }
    unsigned code = 0;
    static_assert(sizeof code == sizeof bytes);
    std::memcpy(&code, bytes, sizeof code);
    return static_cast<button>(code);
}

void progressClient::exitDaemon()
{
    send("<exit/>");
}

int progressClient::eventFd() const
{
    return m_connection->events.fd();
}

int progressClient::commandFd() const
{
    return m_connection->commands.fd();
}

std::optional<progressClient::event> progressClient::nextEvent(milliseconds timeout)
{
    const deadline until(timeout);
    for (;;) {
        if (auto taken = takeEvent(m_connection->eventBytes))
            return taken;
        if (!m_connection->readEvents(until))
            return std::nullopt;
    }
}

std::size_t progressClient::handleEvents(const std::function<void(const event &)> &handler)
{
    m_connection->readEvents(deadline(milliseconds(0)));
    std::size_t handled = 0;
    while (const auto taken = takeEvent(m_connection->eventBytes)) {
        ++handled;
        handler(*taken);
    }
    return handled;
}

void progressClient::renewEventChannel()
{
    const deadline until = m_connection->limit();
    // The daemon must have seen the old channel's end: its slot is the one that a new channel wants.
    m_connection->openEvents().finish(until);
    m_connection->eventBytes.clear();
    m_connection->events = channelSocket::connect(m_connection->eventPort, until);
}
