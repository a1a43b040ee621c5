#pragma once

#include "client/progressClient.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

/// The exit statuses of progressctl, as its manual page lists them. `pipe -- COMMAND` passes the command's
/// on.
enum exitStatus : int {
    statusOk = 0,         ///< done; an accepting button
    statusRejected = 1,   ///< a rejecting button or none, Cancel in `pipe`
    statusUsage = 2,      ///< an argument that is wrong or that the protocol cannot carry
    statusNoDaemon = 3,   ///< no daemon, one that cannot be started or reached, or one of another user
    statusGone = 4,       ///< the daemon went away half-way
    statusTimedOut = 5,   ///< no answer in time
    statusIncomplete = 6, ///< `pipe --expect-complete`: the input ended below 100
    statusFile = 7,       ///< a file cannot be read or written
    statusInternal = 8,   ///< a call to the system failed
};

/// What went wrong outside of the client library, with the exit status that it means.
class failure : public std::runtime_error
{
public:
    failure(int status, const std::string &text) : std::runtime_error(text), m_status(status) {}
    int status() const noexcept { return m_status; }

private:
    int m_status;
};

/// As long as it takes, unless it is more than 0.
inline progressClient::milliseconds timeoutOf(double seconds)
{
    return seconds > 0 ? progressClient::milliseconds(static_cast<long long>(seconds * 1000))
                       : progressClient::unlimited;
}

/// The options that all verbs share.
struct commonOptions {
    std::string identifier;
    std::optional<double> limitSeconds; ///< longest wait for the daemon, if the user has set it

    progressClient::milliseconds limit() const
    {
        return limitSeconds ? timeoutOf(*limitSeconds) : progressClient::defaultTimeout;
    }
    /// The longest wait for a daemon that is being started.
    progressClient::milliseconds startLimit() const
    {
        return limitSeconds ? limit() : progressClient::daemonOptions().timeout;
    }
};

/// Connects, acts, and waits until the daemon has read everything.
void actOnce(const commonOptions &common, const std::function<void(progressClient &)> &act);

/// A line on standard error, with the program's name.
void complain(const std::string &text);

/// The value of a variable; empty if there is none.
std::string environment(const char *name);

/// The content of a file; fails (statusFile) when it cannot be read or is longer than 64 MiB.
std::string readTextFile(const std::string &path);
