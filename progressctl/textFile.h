#pragma once

#include <string>

/// The content of a file; fails (statusFile) when it cannot be read or is longer than 64 MiB.
std::string readTextFile(const std::string &path);

/// Writes a file anew; fails (statusFile) when that does not succeed to the last byte.
void writeTextFile(const std::string &path, const std::string &content);
