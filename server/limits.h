#pragma once

#include <QtGlobal>

/// What one client can ask for at most. Whatever connects may be broken, and the screen is the user's.

/// Characters of a caption, label or title; the rest is cut off. It is more than a screen is wide.
inline constexpr qsizetype longestCaption = 4096;

/// Characters of one configuration entry; a longer one is passed over. File names fit.
inline constexpr qsizetype longestEntry = 16 * 1024;

/// Pixels from an edge of the screen to anything: more than the display protocol can express.
inline constexpr int farthestCoordinate = 32767;
