#pragma once

#include "server/message.h"

#include <QByteArray>

#include <array>
#include <optional>

/// Cuts tagged messages out of text that arrives in arbitrary pieces.
///
/// Of all complete messages that wait, those of the first kind come first, whatever stands in front of
/// them; each cut drops the text in front of the message. A closing tag without an opening tag in front of
/// it is dropped with the text before it. The cost is linear in the text: nothing is searched twice, and
/// what remains is moved only when it is the smaller part.
class messageBuffer
{
public:
    void append(QByteArrayView text);
    /// Cuts out the next message; none when no message is complete. Its payload stays valid until the next
    /// call of this or of `append()` or `clear()`.
    std::optional<message> next();
    /// Bytes that wait for a closing tag.
    qsizetype waiting() const { return m_text.size() - m_head; }
    /// Drops all that waits.
    void clear();

private:
    qsizetype find(size_t kind);
    void compact();

    QByteArray m_text;
    /// Where the text begins that has not been cut yet.
    qsizetype m_head = 0;
    /// Per kind, in front of where no closing tag of it begins.
    std::array<qsizetype, wire::portKinds> m_searched{};
};
