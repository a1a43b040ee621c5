#include "client/connection.h"

#include "client/messageText.h"
#include "wire/words.h"

#include <algorithm>
#include <unistd.h>

namespace
{

/// What a daemon says is short; what goes on without an end is no daemon.
constexpr std::size_t longestReceived = 64 * 1024;
constexpr std::size_t mostEvents = 10'000;

progressError goneBecause(const std::string &why)
{
    return {progressError::reason::gone, why};
}

/// The number behind `prefix`, which ends at `text`'s end or at `stop`.
std::optional<int> numberBehind(std::string_view text, std::string_view prefix, char stop = '\0')
{
    if (!wire::beginsWith(text, prefix))
        return std::nullopt;
    return leadingNumber(text.substr(prefix.size()), stop);
}

progressClient::event eventFromText(std::string text)
{
    using event = progressClient::event;
    using kind = event::kind;
    static_assert(static_cast<int>(kind::closed) == static_cast<int>(wire::eventKind::closed) &&
                  static_cast<std::size_t>(kind::other) == wire::eventNames.size());
    event made;
    const auto plain = std::find(wire::eventNames.begin(), wire::eventNames.end(), text);
    if (plain != wire::eventNames.end())
        made.what = static_cast<kind>(plain - wire::eventNames.begin());
    else if (const auto slot = numberBehind(text, wire::nameOf(wire::eventKind::clicked))) {
        made.what = kind::clicked;
        made.slot = *slot;
    } else if (const auto percent = numberBehind(text, wire::nameOf(wire::eventKind::totalProgress), '|')) {
        const auto seconds = numberBehind(text.substr(std::min(text.find('|'), text.size())), "|");
        if (seconds) {
            made.what = kind::totalProgress;
            made.percent = *percent;
            made.remainingSeconds = *seconds;
        }
    }
    made.text = std::move(text);
    return made;
}

} // namespace

progressClient::connection::connection(const std::string &identifier, milliseconds timeout)
    : m_identifier(identifier), m_timeout(timeout), m_owner(::getpid())
{
}

void progressClient::connection::connect()
{
    m_socket = daemonSocket::connect(m_identifier, deadline(m_timeout));
}

// Whether the daemon gets on.

/// Who has waited in vain waits no more, until something shows that the daemon is back.
deadline progressClient::connection::patience() const
{
    return m_silence == silence::none ? deadline(m_timeout) : deadline::now();
}

deadline progressClient::connection::halfPatience() const
{
    return m_silence == silence::none && m_timeout.count() > 0 ? deadline(m_timeout / 2) : patience();
}

/// A daemon that took nothing is back when there is room; one that did not answer, when it does.
void progressClient::connection::listenForLife()
{
    if (m_silence == silence::none)
        return;
    const bool takes = m_silence == silence::full && waitFor(m_socket->fd(), POLLOUT, deadline::now());
    const bool speaks = m_silence == silence::mute && waitFor(m_socket->fd(), POLLIN, deadline::now());
    const bool attends = m_probe && waitFor(m_probe->fd(), POLLIN, deadline::now());
    if (takes || speaks || attends)
        m_silence = silence::none;
}

/// A daemon that is stopped keeps its channels open and says nothing, as one does that has nothing to say.
/// But it does not serve another channel. One that was not served in time is looked at again later: it is
/// what shows first that the daemon is back.
void progressClient::connection::checkAlive(const deadline &until)
{
    try {
        if (!m_probe)
            m_probe = daemonSocket::connect(m_identifier, until);
        m_probe->finish(until);
    } catch (const progressError &problem) {
        if (problem.why() != progressError::reason::timedOut)
            m_probe.reset();
        else if (m_silence == silence::none)
            m_silence = silence::mute;
        throw;
    }
    m_probe.reset();
    m_silence = silence::none;
}

void progressClient::connection::checkAlive()
{
    checkAlive(patience());
}

// Sending.

void progressClient::connection::send(std::string_view bytes)
{
    listenForLife();
    if (m_silence == silence::full)
        throwTimedOut("take the message");
    const std::size_t sent = m_socket->send(bytes, patience());
    if (sent == bytes.size())
        return;
    if (sent == 0) {
        m_silence = silence::full;
    } else {
        // Whatever came behind half a message would be taken for its rest.
        m_lost =
            goneBecause("the daemon did not take the whole of a message in time, the connection is lost");
        m_socket->abort();
    }
    throwTimedOut("take the message");
}

int progressClient::connection::claim()
{
    if (m_claimed.empty() && m_claims == 0) {
        send(message(wire::messageKind::claim));
        ++m_claims;
    }
    listenForLife();
    if (!readUntil([this] { return !m_claimed.empty(); }, patience())) {
        m_silence = silence::mute;
        throwTimedOut("answer");
    }
    const int slot = m_claimed.front();
    m_claimed.pop_front();
    return slot;
}

/// The connection of a process that was forked off is its parent's, which goes on with it.
void progressClient::connection::finish()
{
    if (::getpid() == m_owner)
        m_socket->finish(patience());
    m_lost = goneBecause("this client has finished");
    m_socket.reset();
}

// Receiving.

/// Takes in what comes first; false when the time is up.
bool progressClient::connection::read(const deadline &until)
{
    char buffer[4096];
    const auto got = m_socket->receive(buffer, sizeof buffer, until);
    if (got == std::size_t{0})
        throwGone();
    m_incoming.append(buffer, got.value_or(0));
    while (auto one = takeReceived(m_incoming))
        sort(std::move(*one));
    if (m_incoming.size() > longestReceived)
        throw goneBecause("what answers is no progress daemon");
    if (got && m_silence == silence::mute)
        m_silence = silence::none;
    return got.has_value();
}

void progressClient::connection::sort(received &&one)
{
    switch (one.what) {
    case wire::replyKind::event:
        m_events.push_back(eventFromText(std::move(one.text)));
        if (m_events.size() > mostEvents)
            m_events.pop_front();
        break;
    case wire::replyKind::claimed:
        m_claimed.push_back(leadingNumber(one.text).value_or(-1));
        m_claims = std::max(0, m_claims - 1); // whoever sends bytes may have claimed, too
        break;
    case wire::replyKind::answer:
        takeAnswer(one.text);
        break;
    }
}

void progressClient::connection::takeAnswer(const std::string &text)
{
    const std::size_t separator = text.find(';');
    const auto number = leadingNumber(text, ';');
    if (!number || separator == std::string::npos || m_awaited.erase(*number) == 0)
        return;
    m_answers[*number] = static_cast<button>(leadingNumber(text.substr(separator + 1)).value_or(0));
}

/// Reads until `found()`; false when the time is up.
template <typename Found>
bool progressClient::connection::readUntil(const Found &found, const deadline &until)
{
    while (!found()) {
        if (read(deadline::earlier(until, halfPatience())))
            continue;
        if (until.isOver())
            return false;
        checkAlive(halfPatience());
    }
    return true;
}

// Boxes.

int progressClient::connection::open(const std::string &box)
{
    send(box);
    return *m_awaited.insert(++m_boxes).first;
}

std::optional<progressClient::button> progressClient::connection::answer(int number, const deadline &until)
{
    const auto isThere = [&] { return m_answers.count(number) > 0; };
    if (!isThere() && m_awaited.count(number) == 0)
        throw progressError(progressError::reason::badArgument,
                            "there is no open box " + std::to_string(number));
    if (!readUntil(isThere, until))
        return std::nullopt;
    return m_answers.extract(number).mapped();
}

/// Nobody but the caller knows of this box.
progressClient::button progressClient::connection::ask(const std::string &box, const deadline &until)
{
    const int number = open(box);
    const auto given = answer(number, until);
    m_awaited.erase(number);
    if (!given)
        throw progressError(progressError::reason::timedOut, "nobody answers the box in time");
    return *given;
}

// Events.

void progressClient::connection::listen()
{
    send(message(wire::messageKind::events));
    m_listens = true;
}

std::optional<progressClient::event> progressClient::connection::nextEvent(const deadline &until)
{
    if (!m_listens)
        throw progressError(progressError::reason::badArgument, "this client does not listen");
    if (!readUntil([this] { return !m_events.empty(); }, until))
        return std::nullopt;
    event first = std::move(m_events.front());
    m_events.pop_front();
    return first;
}

std::size_t progressClient::connection::handleEvents(const std::function<void(const event &)> &handler)
{
    if (m_events.empty())
        read(deadline::now());
    std::size_t handled = 0;
    for (; !m_events.empty(); ++handled) {
        const event first = std::move(m_events.front());
        m_events.pop_front();
        handler(first);
    }
    return handled;
}
