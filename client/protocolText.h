#pragma once

#include "client/progressClient.h"

#include <optional>
#include <string>
#include <string_view>

/// The texts of the protocol: making messages, reading answers. Works on plain text, without sockets.

/// "<TAG>payload</TAG>", or an error (badArgument) for a payload that would not arrive whole: with a zero
/// byte or its own closing tag in it, or too long.
std::string message(std::string_view tag, std::string_view payload);

/// `text`, or an error (badArgument) if it holds `separator`. `what` names it in the error's text.
std::string_view field(std::string_view what, std::string_view text, std::string_view separator);

std::string boxPayload(const progressClient::question &box);

/// What a daemon sends on the local channel.
struct received {
    enum class kind { event, answer, claimed };
    kind what = kind::event;
    std::string text;
};

/// Takes the first complete one off the front of `buffer`, with whatever stands before it.
std::optional<received> takeReceived(std::string &buffer);

progressClient::event eventFromText(std::string text);

/// The decimal number at the front of `text`, up to its end or to `stop`.
std::optional<int> leadingNumber(std::string_view text, char stop = '\0');
