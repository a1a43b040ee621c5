#pragma once

#include "client/deadline.h"

#include <poll.h>
#include <string>

/// Waits until one of `events` (as for poll(2)), an error or a hang-up stands at `fd`; false when the time is
/// up.
bool waitFor(int fd, short events, const deadline &until);

/// `what`, then ": " and the text of errno.
std::string systemText(const std::string &what);
