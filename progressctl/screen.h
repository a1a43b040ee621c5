#pragma once

#include <optional>

/// A rectangle of the X screen, in pixels.
struct screenArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// The user's primary monitor, or the whole screen where monitors are not told apart; none without a display.
std::optional<screenArea> findPrimaryScreen();
