#include "client/connection.h"
#include "client/messageText.h"
#include "wire/words.h"

#include <algorithm>

using error = progressError;

namespace
{

std::string boxField(std::string_view text)
{
    // The breaks may double it, and a box has two.
    constexpr std::size_t longest = longestPayload / 4 - 1024;
    return broken(carriable(text, wire::messageKind::messageBox, longest), wire::fieldSeparator, 1);
}

std::string boxMessage(const progressClient::question &box)
{
    if (box.buttons.empty() || box.buttons.size() > wire::mostButtons)
        throw error(error::reason::badArgument, "a box has one to ten buttons");
    if (box.preset != progressClient::button::none &&
        std::find(box.buttons.begin(), box.buttons.end(), box.preset) == box.buttons.end())
        throw error(error::reason::badArgument, "the default button is none of the box's buttons");

    std::string payload = std::to_string(static_cast<int>(box.picture));
    for (const std::string &text : {box.title, box.text})
        payload.append(wire::fieldSeparator).append(boxField(text));
    for (const auto each : box.buttons) {
        const unsigned number = static_cast<unsigned>(each) | (each == box.preset ? wire::presetFlag : 0);
        payload.append(wire::fieldSeparator).append(std::to_string(number));
    }
    return message(wire::messageKind::messageBox, payload);
}

std::string assertionMessage(std::string_view text)
{
    constexpr auto kind = wire::messageKind::assertion;
    return message(kind, carriable(text, kind));
}

} // namespace

progressClient::progressClient(std::unique_ptr<connection> made) : m_connection(std::move(made)) {}

progressClient::progressClient(const std::string &identifier, milliseconds timeout)
    : m_connection(std::make_unique<connection>(identifier, timeout))
{
    m_connection->connect();
}

progressClient::progressClient(progressClient &&) noexcept = default;
progressClient &progressClient::operator=(progressClient &&) noexcept = default;
progressClient::~progressClient() = default;

progressClient progressClient::orNothing(const std::string &identifier, milliseconds timeout)
{
    auto made = std::make_unique<connection>(identifier, timeout);
    made->goOnWithout();
    made->use([](connection &all) { all.connect(); });
    return progressClient(std::move(made));
}

progressClient progressClient::orNothing(const std::string &identifier, const daemonOptions &options,
                                         milliseconds timeout)
{
    auto made = std::make_unique<connection>(identifier, timeout);
    made->goOnWithout();
    made->use([&](connection &all) {
        startDaemon(identifier, options);
        all.connect();
    });
    return progressClient(std::move(made));
}

progressClient::connection &progressClient::here() const
{
    if (!m_connection)
        throw error(error::reason::badArgument, "this client was moved from");
    return *m_connection;
}

std::string progressClient::socketPath(const std::string &identifier)
{
    return socketPathOf(identifier);
}

bool progressClient::isRunning(const std::string &identifier, milliseconds timeout)
{
    return daemonSocket::find(identifier, deadline(timeout)).has_value();
}

std::string progressClient::whyGone() const
{
    return here().whyGone();
}

void progressClient::checkAlive()
{
    here().use([](connection &all) { all.checkAlive(); });
}

pid_t progressClient::daemonProcess() const
{
    const daemonSocket *socket = here().socket();
    return socket ? socket->daemonProcess() : 0;
}

int progressClient::claim()
{
    return here().use(-1, [](connection &all) { return all.claim(); });
}

void progressClient::send(std::string_view message)
{
    here().use([message](connection &all) { all.send(message); });
}

void progressClient::send(progressBatch &batch)
{
    const progressBatch taken = std::exchange(batch, progressBatch());
    send(taken.messages());
}

void progressClient::tell(const std::string &message)
{
    send(message);
}

void progressClient::finish()
{
    here().use([](connection &all) { all.finish(); });
}

int progressClient::openBox(const question &box)
{
    return here().use(0, [asked = boxMessage(box)](connection &all) { return all.open(asked); });
}

int progressClient::openAssertion(std::string_view text)
{
    return here().use(0, [asked = assertionMessage(text)](connection &all) { return all.open(asked); });
}

std::optional<progressClient::button> progressClient::answer(int number, milliseconds timeout)
{
    return here().use(std::optional<button>(),
                      [&](connection &all) { return all.answer(number, deadline(timeout)); });
}

progressClient::button progressClient::ask(const question &box, milliseconds timeout)
{
    return here().use(button::none, [&, asked = boxMessage(box)](connection &all) {
        return all.ask(asked, deadline(timeout));
    });
}

progressClient::button progressClient::reportAssertion(std::string_view text, milliseconds timeout)
{
    return here().use(button::none, [&, asked = assertionMessage(text)](connection &all) {
        return all.ask(asked, deadline(timeout));
    });
}

void progressClient::listen()
{
    here().use([](connection &all) { all.listen(); });
}

int progressClient::fd() const
{
    const daemonSocket *socket = here().socket();
    return socket ? socket->fd() : -1;
}

std::optional<progressClient::event> progressClient::nextEvent(milliseconds timeout)
{
    return here().use(std::optional<event>(),
                      [timeout](connection &all) { return all.nextEvent(deadline(timeout)); });
}

std::size_t progressClient::handleEvents(const std::function<void(const event &)> &handler)
{
    return here().use(std::size_t{0}, [&handler](connection &all) { return all.handleEvents(handler); });
}
