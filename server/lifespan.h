#pragma once

#include <QTimer>

#include <vector>

/// Where clients come in.
class wayIn
{
public:
    enum class presence { none, uncertain, client };

    /// Whether somebody is there who keeps a daemon that ends with its last client. `uncertain` when
    /// somebody has come, or has sent something, that was not looked at yet.
    virtual presence clients() = 0;

protected:
    ~wayIn() = default;
};

/// Decides when the daemon ends by what its clients do or leave undone; nobody else does.
class lifespan
{
public:
    struct terms {
        /// As on the command line: with one of 0 or more, clients do not end the daemon.
        int basePort;
        /// It does not end with its last client.
        bool stays;
        /// Seconds: one that stays ends when there has been no client for so long; any other one when none
        /// has come in this time since its start. 0 for never.
        int longestAlone;
    };

    explicit lifespan(const terms &given);
    Q_DISABLE_COPY_MOVE(lifespan)

    /// `way`, not owned, is asked from now on.
    void watch(wayIn &way) { m_ways.push_back(&way); }
    /// A client of a way in has gone.
    void clientGone();
    /// A client wants the daemon to end; whether it does. `portnum` is what the client's server was given.
    bool requestExit(int portnum) const;
    /// The same for the local socket, which goes by the base port.
    bool requestExit() const { return requestExit(m_terms.basePort); }
    /// The daemon's own user ends it, whatever the terms.
    void stop() const;

private:
    void endIfAlone(const char *reason);

    terms m_terms;
    std::vector<wayIn *> m_ways;
    QTimer m_alone;
};
