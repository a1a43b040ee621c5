#pragma once

#include "client/progressClient.h"

#include <optional>
#include <string>

/// What a daemon's lock file says: two port numbers, a line each. None when there is no such file, it is no
/// plain file of this user, or it does not hold two ports; 0 stands for a server that could not listen.
std::optional<progressClient::ports> readLockFile(const std::string &identifier);

/// Removes it, so that what is read later was written later.
void removeLockFile(const std::string &identifier);
