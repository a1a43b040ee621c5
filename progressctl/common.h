#pragma once

#include "client/progressClient.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

/// What went wrong outside of the client library, with the exit status that it means.
class failure : public std::runtime_error
{
public:
    failure(int status, const std::string &text) : std::runtime_error(text), m_status(status) {}
    int status() const noexcept { return m_status; }

private:
    int m_status;
};

/// The options that all verbs share.
struct commonOptions {
    std::string identifier;
    std::optional<double> limitSeconds; ///< longest wait for the daemon, if the user has set it

    progressClient::milliseconds limit() const { return limitOr(progressClient::defaultTimeout); }
    /// The longest wait for a daemon that is being started.
    progressClient::milliseconds startLimit() const
    {
        return limitOr(progressClient::daemonOptions().timeout);
    }

private:
    progressClient::milliseconds limitOr(progressClient::milliseconds usual) const
    {
        return limitSeconds ? progressClient::milliseconds(static_cast<long long>(*limitSeconds * 1000))
                            : usual;
    }
};

/// Connects, acts, and waits until the daemon has read everything.
int actOnce(const commonOptions &common, const std::function<void(progressClient &)> &act);

/// A line on standard error, with the program's name.
void complain(const std::string &text);
