#pragma once

#include "wire/tags.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The texts of the protocol: making messages, reading what a daemon says. Works on plain text, without
/// sockets.

/// What one message carries at most, in bytes: a daemon hangs up on who sends more.
constexpr std::size_t longestPayload = wire::longestMessage - 64;

/// Cuts to at most `longest` bytes, between two characters.
void cutBetweenCharacters(std::string &text, std::size_t longest);

/// `text` as it arrives whole in a message of this kind: without zero bytes, with a character without a width
/// in what would end the message, and cut to at most `longest` bytes, between two characters.
std::string carriable(std::string_view text, wire::messageKind kind, std::size_t longest = longestPayload);

/// `text` with a character without a width before the byte `at` of each `mark` in it: it reads as before, and
/// the mark is none.
std::string broken(std::string text, std::string_view mark, std::size_t at);

/// An error (badArgument) for a key that is none.
std::string configurationPayload(const std::vector<std::pair<std::string, std::string>> &entries);

/// What a daemon sends on the local channel.
struct received {
    wire::replyKind what = wire::replyKind::event;
    std::string text;
};

/// Takes the first complete one off the front of `buffer`, with whatever stands before it.
std::optional<received> takeReceived(std::string &buffer);

/// The decimal number at the front of `text`, up to its end or to `stop`.
std::optional<int> leadingNumber(std::string_view text, char stop = '\0');
