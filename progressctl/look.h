#pragma once

#include <string>
#include <utility>
#include <vector>

/// Settings of the daemon, as `progressClient::configure()` takes them.
using settingEntries = std::vector<std::pair<std::string, std::string>>;

/// KEY=VALUE, as one entry; fails (statusUsage) on a key or word that the daemon would pass over without a
/// word.
std::pair<std::string, std::string> entryFromText(const std::string &text);

/// How a daemon that is started here is to look.
struct lookOptions {
    std::string layout = "fitted";
    std::string theme = "auto"; ///< "light", "dark", "auto", "none" (nothing is said), or a file's path
};

/// The settings of a theme: of a file with a KEY=VALUE a line those that it lists (empty lines and lines with
/// "#" at the start do not count), else the daemon's own theme of this name.
settingEntries loadTheme(const std::string &nameOrPath);

/// All settings of the look.
settingEntries loadLook(const lookOptions &look);
