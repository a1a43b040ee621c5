#pragma once

#include "client/daemonSocket.h"
#include "client/messageText.h"
#include "client/progressClient.h"

#include <deque>
#include <map>
#include <set>

/// The socket of one client, and what has come from it and was not asked for yet. Knows whether the daemon
/// still gets on.
class progressClient::connection
{
public:
    /// Of this daemon, once it is told to `connect()`.
    connection(const std::string &identifier, milliseconds timeout);
    void connect();

    /// Calls `act`. Where there is no connection any more, or it is lost meanwhile, throws the error; gives
    /// `nothing` instead where this one goes on without.
    template <typename Result, typename Act> Result use(Result nothing, const Act &act);
    template <typename Act> void use(const Act &act)
    {
        use(true, [&act](connection &all) { return act(all), true; });
    }
    /// From now on goes on without a daemon, rather than throw.
    void goOnWithout() { m_goesOn = true; }
    /// Empty while there is a daemon.
    std::string whyGone() const { return m_lost ? m_lost->what() : std::string(); }
    const daemonSocket *socket() const { return m_socket ? &*m_socket : nullptr; }

    void send(std::string_view bytes);
    int claim();
    void checkAlive();
    void finish();

    int open(const std::string &box);
    std::optional<button> answer(int number, const deadline &until);
    button ask(const std::string &box, const deadline &until);

    void listen();
    std::optional<event> nextEvent(const deadline &until);
    std::size_t handleEvents(const std::function<void(const event &)> &handler);

private:
    /// How a daemon that does not get on was found out: it took nothing, or did not answer.
    enum class silence { none, full, mute };

    bool read(const deadline &until);
    void sort(received &&one);
    void takeAnswer(const std::string &text);
    void checkAlive(const deadline &until);
    void listenForLife();
    deadline patience() const;
    deadline halfPatience() const;
    template <typename Found> bool readUntil(const Found &found, const deadline &until);

    const std::string m_identifier;
    const milliseconds m_timeout{0};
    const pid_t m_owner;
    std::optional<daemonSocket> m_socket;
    std::optional<progressError> m_lost; ///< why nothing can be sent any more
    bool m_goesOn = false;
    silence m_silence = silence::none;
    std::optional<daemonSocket> m_probe; ///< waits for the daemon to get round to it

    std::string m_incoming;
    bool m_listens = false;
    std::deque<event> m_events;
    std::deque<int> m_claimed;
    int m_claims = 0;        ///< asked for and not answered yet
    int m_boxes = 0;         ///< asked so far: the number of the last one
    std::set<int> m_awaited; ///< boxes whose answers are wanted
    std::map<int, button> m_answers;
};

template <typename Result, typename Act>
Result progressClient::connection::use(Result nothing, const Act &act)
{
    try {
        if (m_lost)
            throw *m_lost;
        return act(*this);
    } catch (const progressError &problem) {
        if (!m_goesOn || problem.why() == progressError::reason::badArgument)
            throw;
        // A daemon that was there and is late may come back.
        if (problem.why() != progressError::reason::timedOut || !m_socket)
            m_lost = problem;
        if (m_lost)
            m_socket.reset();
        return nothing;
    }
}
