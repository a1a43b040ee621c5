#pragma once

#include "client/progressClient.h"

#include <functional>
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
    double limitSeconds = 5; ///< longest wait for the daemon

    progressClient::milliseconds limit() const
    {
        return progressClient::milliseconds(static_cast<long long>(limitSeconds * 1000));
    }
};

/// Connects, acts, and waits until the daemon has read everything.
int actOnce(const commonOptions &common, const std::function<void(progressClient &)> &act);

/// A line on standard error, with the program's name.
void complain(const std::string &text);
