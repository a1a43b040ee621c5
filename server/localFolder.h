#pragma once

#include <string>

/// Where the sockets of this user's daemons lie. Found out at the first call.
const std::string &localFolder();

/// Finds the folder out before the toolkit, which makes a runtime folder where XDG_RUNTIME_DIR names none,
/// and gives it this session's, or that one, for its own. To be called before the application object is made.
void settleLocalFolder();
