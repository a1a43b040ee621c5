#pragma once

#include <string>
#include <string_view>

/// A text that arrives whole in a message of this kind: what would end the message gets a character without a
/// width, and zero bytes are left out.
std::string carriable(std::string text, std::string_view kind);

/// Line ends and other control characters made blanks.
std::string oneLine(std::string text);

/// A window's title as a setting, on one line. What would end the setting, ";", is shown as its look-alike.
std::string titleSetting(const std::string &title);
