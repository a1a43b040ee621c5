#pragma once

#include <optional>
#include <string>

/// How long it will go on as it went so far, in seconds; none below 1 percent.
std::optional<long long> secondsLeft(double elapsedSeconds, int percent);

/// "1:05 remaining", "2:03:07 remaining".
std::string remainingText(long long seconds);
