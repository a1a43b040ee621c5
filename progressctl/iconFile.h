#pragma once

#include <string>

/// The picture that programs' icons of this name have, or "" (which is said on standard error).
std::string iconFile(const std::string &name);
