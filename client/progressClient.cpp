#include "client/progressClient.h"

#include "client/localSocket.h"
#include "client/protocolText.h"
#include "client/socketPath.h"

#include <deque>
#include <map>
#include <set>

namespace
{

using error = progressClient::error;

/// What a daemon says is short; what goes on without an end is no daemon.
constexpr std::size_t longestReceived = 64 * 1024;
constexpr std::size_t mostEvents = 10'000;

void checkSlot(int slot)
{
    if (slot < 0 || slot >= progressClient::slots)
        throw error(error::reason::badArgument, "slots run from 0 to 9, there is no " + std::to_string(slot));
}

} // namespace

/// The socket, and what has come from it and was not asked for yet.
struct progressClient::connection {
    connection(std::string name, milliseconds longest)
        : identifier(std::move(name)), timeout(longest), socket(localSocket::connect(identifier, limit()))
    {
    }

    const std::string identifier;
    const milliseconds timeout;
    localSocket socket;
    std::string incoming;
    bool listens = false;
    std::deque<event> events;
    std::deque<int> claimed;
    int boxes = 0;         ///< asked so far: the number of the last one
    std::set<int> awaited; ///< boxes whose answers are wanted
    std::map<int, button> answers;

    deadline limit() const { return deadline(timeout); }
    bool read(const deadline &until);
    void sort(received &&one);
    void takeAnswer(const std::string &text);
    void checkAlive(const deadline &until) const;
    button heard(int number, std::optional<button> answer);
    template <typename Found> bool waitFor(const Found &found, const deadline &until);
};

/// Takes in what comes first; false when the time is up.
bool progressClient::connection::read(const deadline &until)
{
    char buffer[4096];
    const auto got = socket.receive(buffer, sizeof buffer, until);
    if (got == std::size_t{0})
        throwGone();
    incoming.append(buffer, got.value_or(0));
    while (auto one = takeReceived(incoming))
        sort(std::move(*one));
    if (incoming.size() > longestReceived)
        throw error(error::reason::gone, "what answers is no progress daemon");
    return got.has_value();
}

void progressClient::connection::sort(received &&one)
{
    switch (one.what) {
    case received::kind::event:
        events.push_back(eventFromText(std::move(one.text)));
        if (events.size() > mostEvents)
            events.pop_front();
        break;
    case received::kind::claimed:
        claimed.push_back(leadingNumber(one.text).value_or(-1));
        break;
    case received::kind::answer:
        takeAnswer(one.text);
        break;
    }
}

void progressClient::connection::takeAnswer(const std::string &text)
{
    const std::size_t separator = text.find(';');
    const auto number = leadingNumber(text, ';');
    if (!number || separator == std::string::npos || awaited.erase(*number) == 0)
        return;
    answers[*number] = static_cast<button>(leadingNumber(text.substr(separator + 1)).value_or(0));
}

/// A daemon that is stopped keeps its channels open and says nothing, as one does that has nothing to say.
/// But it does not serve another channel.
void progressClient::connection::checkAlive(const deadline &until) const
{
    localSocket::connect(identifier, until).finish(until);
}

/// Reads until `found()`; false when the time is up.
template <typename Found> bool progressClient::connection::waitFor(const Found &found, const deadline &until)
{
    while (!found()) {
        const deadline silence(timeout / 2);
        if (read(deadline::earlier(until, silence)))
            continue;
        if (until.isOver())
            return false;
        checkAlive(deadline(timeout / 2));
    }
    return true;
}

/// The answer of a box that nobody but the caller knows.
progressClient::button progressClient::connection::heard(int number, std::optional<button> answer)
{
    awaited.erase(number);
    if (!answer)
        throw error(error::reason::timedOut, "nobody answers the box in time");
    return *answer;
}

std::string progressClient::socketPath(const std::string &identifier)
{
    return ::socketPath(identifier);
}

bool progressClient::isRunning(const std::string &identifier, milliseconds timeout)
{
    return answers(identifier, deadline(timeout));
}

progressClient::progressClient(const std::string &identifier, milliseconds timeout)
    : m_connection(std::make_unique<connection>(identifier, timeout))
{
}

progressClient::progressClient(progressClient &&) noexcept = default;
progressClient &progressClient::operator=(progressClient &&) noexcept = default;
progressClient::~progressClient() = default;

pid_t progressClient::daemonProcess() const
{
    return m_connection->socket.daemonProcess();
}

void progressClient::checkAlive()
{
    m_connection->checkAlive(m_connection->limit());
}

void progressClient::send(std::string_view message)
{
    m_connection->socket.send(message, m_connection->limit());
}

void progressClient::finish()
{
    m_connection->socket.finish(m_connection->limit());
}

int progressClient::claim()
{
    auto &claimed = m_connection->claimed;
    claimed.clear();
    send("<claim/>");
    if (!m_connection->waitFor([&] { return !claimed.empty(); }, m_connection->limit()))
        throw error(error::reason::timedOut, "the daemon does not answer in time");
    return claimed.front();
}

void progressClient::progress(std::string_view keyword)
{
    send(message("progress", keyword));
}

void progressClient::progress(std::string_view keyword, int slot)
{
    checkSlot(slot);
    progress(std::string(keyword) + std::to_string(slot));
}

void progressClient::progress(std::string_view keyword, int slot, std::string_view text)
{
    checkSlot(slot);
    progress((std::string(keyword) + std::to_string(slot) + ';').append(text));
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

void progressClient::pulse(int slot)
{
    progress("pulse:", slot);
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
    for (const auto &[key, value] : entries)
        payload.append(field("a key", key, ";")).append("=").append(field("a value", value, ";")).append(";");
    send(message("configuration", payload));
}

int progressClient::openBox(const question &box)
{
    send(message("msgbox", boxPayload(box)));
    return *m_connection->awaited.insert(++m_connection->boxes).first;
}

int progressClient::openAssertion(std::string_view text)
{
    send(message("assert", text));
    return *m_connection->awaited.insert(++m_connection->boxes).first;
}

std::optional<progressClient::button> progressClient::answer(int number, milliseconds timeout)
{
    auto &answers = m_connection->answers;
    const auto isThere = [&] { return answers.count(number) > 0; };
    if (!isThere() && m_connection->awaited.count(number) == 0)
        throw error(error::reason::badArgument, "there is no open box " + std::to_string(number));
    if (!m_connection->waitFor(isThere, deadline(timeout)))
        return std::nullopt;
    return answers.extract(number).mapped();
}

progressClient::button progressClient::ask(const question &box, milliseconds timeout)
{
    const int number = openBox(box);
    return m_connection->heard(number, answer(number, timeout));
}

progressClient::button progressClient::reportAssertion(std::string_view text, milliseconds timeout)
{
    const int number = openAssertion(text);
    return m_connection->heard(number, answer(number, timeout));
}

void progressClient::exitDaemon()
{
    send("<exit/>");
}

void progressClient::listen()
{
    send("<events/>");
    m_connection->listens = true;
}

int progressClient::fd() const
{
    return m_connection->socket.fd();
}

std::optional<progressClient::event> progressClient::nextEvent(milliseconds timeout)
{
    if (!m_connection->listens)
        throw error(error::reason::badArgument, "this client does not listen");
    auto &events = m_connection->events;
    if (!m_connection->waitFor([&] { return !events.empty(); }, deadline(timeout)))
        return std::nullopt;
    event first = std::move(events.front());
    events.pop_front();
    return first;
}

std::size_t progressClient::handleEvents(const std::function<void(const event &)> &handler)
{
    if (m_connection->events.empty())
        m_connection->read(deadline(milliseconds(0)));
    std::size_t handled = 0;
    for (auto &events = m_connection->events; !events.empty(); ++handled) {
        const event first = std::move(events.front());
        events.pop_front();
        handler(first);
    }
    return handled;
}
