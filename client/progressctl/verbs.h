#pragma once

#include "client/progressClient.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

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

/// The command line while it is put together: each verb adds itself to `app` and, when it was given, leaves
/// in `chosen` what is to be done, which returns the exit status.
struct commandLineSetup {
    CLI::App &app;
    commonOptions common;
    std::vector<std::string> command; ///< behind "--", of `pipe`
    std::function<int()> chosen;
};

/// One file each.
void addDaemonVerbs(commandLineSetup &setup);
void addDialogVerbs(commandLineSetup &setup);
void addConfigureVerb(commandLineSetup &setup);
void addBoxVerbs(commandLineSetup &setup);
void addEventsVerb(commandLineSetup &setup);
void addPipeVerb(commandLineSetup &setup);
void addRecordsVerb(commandLineSetup &setup);
void addCompleteVerb(commandLineSetup &setup);

/// For an option's value: seconds from `least` to `most`, a number that is one.
CLI::Validator secondsWithin(double least, double most);

/// Connects, acts, and waits until the daemon has read everything.
int actOnce(const commonOptions &common, const std::function<void(progressClient &)> &act);

/// A line on standard error, with the program's name.
void complain(const std::string &text);
