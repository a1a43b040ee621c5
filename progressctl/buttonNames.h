#pragma once

#include "client/progressClient.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// "yes-to-all" and so on; "none" for a box that was closed without a button.
std::string_view nameOf(progressClient::button button);

/// Upper and lower case, blanks, "-" and "_" make no difference.
std::optional<progressClient::button> buttonFromName(std::string_view name);

/// Whether the button says yes rather than no. A box that was closed says no.
bool isAccepting(progressClient::button button);

std::vector<std::string> buttonNames();

/// All names, with ", " in between.
std::string allButtonNames();
