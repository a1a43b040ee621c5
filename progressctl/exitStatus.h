#pragma once

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
