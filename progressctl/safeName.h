#pragma once

#include <string>

/// A name made into one for a file that cannot leave its folder: no "/" or control characters, no dot in
/// front, at most 100 bytes.
std::string safeName(std::string text);

/// The last part of a path.
std::string baseName(const std::string &path);
