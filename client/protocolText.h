#pragma once

#include "client/progressClient.h"

#include <optional>
#include <string>
#include <string_view>

/// The texts of the protocol: making messages, reading events. Works on plain text, without sockets.

/// UTF-8 to Latin-1: "?" for a character outside of it; what is no UTF-8 passes as it is.
std::string latin1FromUtf8(std::string_view text);

/// `text` in Latin-1, or an error (badArgument) if it holds a zero byte, a tag of the protocol, or one of
/// `separator`. `what` names it in the error's text.
std::string carried(std::string_view what, std::string_view text, std::string_view separator = {});

/// "<TAG>payload</TAG>".
std::string message(std::string_view tag, std::string_view payload);

std::string boxPayload(const progressClient::question &box);

/// Takes the first complete event off the front of `buffer`, with whatever stands before it.
std::optional<progressClient::event> takeEvent(std::string &buffer);

progressClient::event eventFromText(std::string text);
