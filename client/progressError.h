#pragma once

#include <stdexcept>
#include <string>

#if defined(__GNUC__)
#define PROGRESSCLIENT_EXPORT __attribute__((visibility("default")))
#else
#define PROGRESSCLIENT_EXPORT
#endif

/// What the functions of the library throw; `what()` is one line without a full stop.
class PROGRESSCLIENT_EXPORT progressError : public std::runtime_error
{
public:
    enum class reason {
        badArgument, ///< the caller's own mistake; nothing was sent
        notRunning,  ///< nobody answers at the local channel
        cannotStart, ///< the daemon's program is missing or ended at once, or its port is taken
        notOurs,     ///< the local channel, or its folder, belongs to somebody else
        gone,        ///< the daemon, or its connection to us, ended half-way
        timedOut,
        system, ///< a call to the system failed, or the folder's path is too long for a socket
    };
    progressError(reason why, const std::string &text) : std::runtime_error(text), m_why(why) {}
    reason why() const noexcept { return m_why; }

private:
    reason m_why;
};
