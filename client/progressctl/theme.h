#pragma once

#include "client/progressctl/verbs.h"

#include <string>
#include <utility>
#include <vector>

/// Settings of the daemon's look, as `progressClient::configure()` takes them.
using themeEntries = std::vector<std::pair<std::string, std::string>>;

constexpr char defaultTheme[] = "light";

/// The entries of a text with a KEY=VALUE a line; empty lines and lines with "#" at the start do not count.
/// `name` stands in the text of a failure (statusUsage).
themeEntries entriesFromText(const std::string &text, const std::string &name);

/// KEY=VALUE, as one entry; fails (statusUsage) on a key that the daemon does not know.
std::pair<std::string, std::string> entryFromText(const std::string &text);

/// "light" and "dark" are built in, "none" is empty, everything else is a file's path.
themeEntries loadTheme(const std::string &nameOrPath);

/// Gives a daemon that has just been started its look; unless the theme says so itself, also the screen that
/// its windows are to be centred on.
void applyTheme(const commonOptions &common, themeEntries theme);
void applyTheme(progressClient &client, themeEntries theme);

/// The daemon's program: the environment's PROGRESSD, else "progressd".
std::string daemonProgram();
