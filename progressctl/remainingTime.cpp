#include "progressctl/remainingTime.h"

#include <cmath>
#include <cstdio>

std::optional<long long> secondsLeft(double elapsedSeconds, int percent)
{
    if (percent < 1)
        return std::nullopt;
    return std::llround(elapsedSeconds * (100 - percent) / percent);
}

std::string remainingText(long long seconds)
{
    char text[64];
    if (seconds >= 3600)
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld remaining", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    else
        std::snprintf(text, sizeof text, "%lld:%02lld remaining", seconds / 60, seconds % 60);
    return text;
}
