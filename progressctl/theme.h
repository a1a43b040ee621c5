#pragma once

#include "progressctl/settings.h"

#include <string>

namespace CLI
{
class App;
}

/// How a daemon that is started here is to look.
struct lookOptions {
    std::string layout = "fitted";
    std::string theme = "auto"; ///< "light", "dark", "auto", "none" (nothing is said), or a file's path
};

/// `--layout` and `--theme`.
void addLookOptions(CLI::App &verb, lookOptions &look);

/// The settings of a theme: of a file those that it lists, else the daemon's own theme of this name.
settingEntries loadTheme(const std::string &nameOrPath);

/// All settings of the look. Unless a theme's file says so itself, also the screen that windows are to be
/// centred on.
settingEntries loadLook(const lookOptions &look);

/// The daemon's program: the environment's PROGRESSD, else "progressd".
std::string daemonProgram();
