#pragma once

#include "stats/trustedFile.h"

#include <string>

/// The folder of the learned runs that are this user's alone, `wire::learnedFolder`.

/// Makes the folder where it is missing, and shuts it to others. Only one process at a time has the lock,
/// which lasts as long as the result. None, and a line in the log, where the folder is not to be had or
/// somebody keeps the lock for more than half a second.
fileDescriptor lockUserFolder();

/// Lets the names that have not been used for the longest time go, unless `path` is there or there is room
/// for it.
void makeRoomFor(const std::string &path);
