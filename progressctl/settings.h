#pragma once

#include <string>
#include <utility>
#include <vector>

/// Settings of the daemon, as `progressClient::configure()` takes them.
using settingEntries = std::vector<std::pair<std::string, std::string>>;

/// KEY=VALUE, as one entry; fails (statusUsage) on a key, word, colour or font that the daemon would pass
/// over without a word.
std::pair<std::string, std::string> entryFromText(const std::string &text);

/// The entries of a text with a KEY=VALUE a line; empty lines and lines with "#" at the start do not count.
/// `name` stands in the text of a failure.
settingEntries entriesFromText(const std::string &text, const std::string &name);

std::vector<std::string> settingKeys();

/// Says on standard error which fonts of these entries are not on this machine, if it can be found out.
void tellMissingFonts(const settingEntries &entries);
