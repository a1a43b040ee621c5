#pragma once

#include <QString>

#include <string_view>

/// What differs between the two ways in, as long as messages are bytes: the ports carry Latin-1 and end a
/// text at a semicolon; local channels carry UTF-8, and the last text of a command takes the rest.
enum class dialect { port, local };

/// Bytes that are no UTF-8 become U+FFFD.
inline QString decoded(std::string_view bytes, dialect from)
{
    return from == dialect::port ? QString::fromLatin1(bytes) : QString::fromUtf8(bytes);
}
