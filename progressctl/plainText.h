#pragma once

#include <string>
#include <string_view>

/// "\n" made a line feed, "\t" a blank and "\\" a backslash.
std::string withoutEscapes(std::string_view text);

/// Well-formed markup of labels ("<b>", "<span …>", entities) without its tags. What is none stays as it
/// stands, and so does the whole of a text whose tags do not match.
std::string withoutMarkup(const std::string &text);

/// A button's label as the daemon wants it, from one in which "_" marks the letter that presses the button
/// and
/// "__" is an underscore. "&" is nothing special in it.
std::string labelFromMnemonic(std::string_view text);

/// Line ends and other control characters made blanks.
std::string oneLine(std::string text);
