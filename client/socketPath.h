#pragma once

#include <string>

/// The folder of this user's daemons' sockets: below XDG_RUNTIME_DIR, or in /tmp when that names no folder of
/// this user.
std::string socketFolder();

/// IDENTIFIER.sock in it. An error (badArgument) for an identifier that can have none.
std::string socketPath(const std::string &identifier);

/// Makes the folder where it is missing; an error (system) when that cannot be.
void makeSocketFolder();

/// An error (notOurs) unless the folder is this user's and closed to others. One that is missing is fine.
void checkSocketFolder();
