#pragma once

#include <string>
#include <string_view>

/// "\n" made a line feed, "\t" a blank and "\\" a backslash.
std::string withoutEscapes(std::string_view text);

/// Well-formed markup of labels ("<b>", "<span …>", entities) without its tags. What is none stays as it
/// stands, and so does the whole of a text whose tags do not match.
std::string withoutMarkup(const std::string &text);
