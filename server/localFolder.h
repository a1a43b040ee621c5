#pragma once

#include <string>

/// Where the sockets of this user's daemons lie: "progressd" in the folder that XDG_RUNTIME_DIR names, or
/// "/tmp/progressd-UID" where it names no folder of this user. Found out at the first call.
const std::string &localFolder();

/// Finds the folder out before the toolkit, which makes a runtime folder where XDG_RUNTIME_DIR names none,
/// and gives it that one for its own. To be called before the application object is made.
void settleLocalFolder();

/// Makes the folder where it is missing. False, with a reason in `error`, when it is a link, belongs to
/// somebody else or is open to others: then no socket can be trusted there.
bool prepareLocalFolder(const std::string &folder, std::string &error);
