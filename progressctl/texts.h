#pragma once

#include <string>
#include <string_view>

// Of what a writer says.

/// "\n" made a line feed, "\t" a blank and "\\" a backslash.
std::string withoutEscapes(std::string_view text);

/// Well-formed markup of labels ("<b>", "<span …>", entities) without its tags. What is none stays as it
/// stands, and so does the whole of a text whose tags do not match.
std::string withoutMarkup(const std::string &text);

/// A button's label as the daemon wants it, from one in which "_" marks the letter that presses the button
/// and "__" is an underscore. "&" is nothing special in it.
std::string labelFromMnemonic(std::string_view text);

// For the daemon.

/// Line ends and other control characters made blanks.
std::string oneLine(std::string text);

/// A name made into one for a file that cannot leave its folder: no "/" or control characters, no dot in
/// front, at most 100 bytes.
std::string safeName(std::string text);

// For the user.

/// "1:05 remaining", "2:03:07 remaining", in the user's language.
std::string translatedRemaining(long long seconds);
