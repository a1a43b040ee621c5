#pragma once

#include <string>

/// IDENTIFIER.sock in this user's folder. An error: badArgument for an identifier that can have none, system
/// where the folder's path is too long for a socket.
std::string socketPath(const std::string &identifier);

/// Makes the folder where it is missing; an error (system) when that cannot be.
void makeSocketFolder();

/// An error (notOurs) unless the folder is this user's and closed to others. One that is missing is fine.
void checkSocketFolder();
