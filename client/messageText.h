#pragma once

#include "client/progressClient.h"
#include "wire/tags.h"

#include <optional>
#include <string>
#include <string_view>

/// The texts of the protocol: making messages, reading what a daemon says. Works on plain text, without
/// sockets.

/// What one message carries at most, in bytes: a daemon hangs up on who sends more.
constexpr std::size_t longestPayload = wire::longestMessage - 64;

/// `text` as it arrives whole in a message of this kind: without zero bytes, with a character without a width
/// in what would end the message, and cut to at most `longest` bytes, between two characters.
std::string carriable(std::string_view text, wire::messageKind kind, std::size_t longest = longestPayload);

/// An error (badArgument) for a key that is none.
std::string configurationPayload(const std::vector<std::pair<std::string, std::string>> &entries);

/// An error (badArgument) for no or too many buttons, and for a preset that is none of them.
std::string boxMessage(const progressClient::question &box);
std::string assertionMessage(std::string_view text);

/// What a daemon sends on the local channel.
struct received {
    wire::replyKind what = wire::replyKind::event;
    std::string text;
};

/// Takes the first complete one off the front of `buffer`, with whatever stands before it.
std::optional<received> takeReceived(std::string &buffer);

progressClient::event eventFromText(std::string text);

/// The decimal number at the front of `text`, up to its end or to `stop`.
std::optional<int> leadingNumber(std::string_view text, char stop = '\0');
