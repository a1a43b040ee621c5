#pragma once

#include "wire/tags.h"

#include <QString>

using wire::messageKind;

struct message {
    messageKind kind;
    /// The bytes between the tags; empty for a message that is one tag. Valid until its buffer is touched
    /// again.
    std::string_view payload;
};

/// What differs between the two ways in, as long as messages are bytes: the ports carry Latin-1 and end a
/// text at a semicolon; local channels carry UTF-8, and the last text of a command takes the rest.
enum class dialect { port, local };

/// Bytes that are no UTF-8 become U+FFFD.
inline QString decoded(std::string_view bytes, dialect from)
{
    return from == dialect::port ? QString::fromLatin1(bytes) : QString::fromUtf8(bytes);
}

// What one client can ask for at most. Whatever connects may be broken, and the screen is the user's.

/// Characters of a caption, label or title; the rest is cut off. It is more than a screen is wide.
inline constexpr qsizetype longestCaption = 4096;

/// Characters of one configuration entry; a longer one is passed over. File names fit.
inline constexpr qsizetype longestEntry = 16 * 1024;

/// Pixels from an edge of the screen to anything: more than the display protocol can express.
inline constexpr int farthestCoordinate = 32767;
