#pragma once

#include "server/message.h"
#include "server/waitingBytes.h"

#include <array>
#include <optional>

/// Cuts tagged messages out of text that arrives in arbitrary pieces.
///
/// Of all complete messages that wait, those of the first kind come first, whatever stands in front of
/// them; each cut drops the text in front of the message. A closing tag without an opening tag in front of
/// it is dropped with the text before it.
class messageBuffer
{
public:
    void append(QByteArrayView text) { m_waiting.append(text); }
    /// Cuts out the next message; none when no message is complete. Its payload stays valid until the next
    /// call of `append()` or `clear()`.
    std::optional<message> next();
    /// Bytes that wait for a closing tag.
    qsizetype waiting() const { return m_waiting.size(); }
    /// Drops all that waits.
    void clear() { *this = {}; }

private:
    void drop(size_t size);

    waitingBytes m_waiting;
    /// Per kind, in front of where no closing tag of it begins.
    std::array<size_t, wire::portKinds> m_searched{};
};
