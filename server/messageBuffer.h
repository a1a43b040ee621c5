#pragma once

#include <QByteArray>

#include <array>
#include <optional>

/// The kinds of message, in the order in which they are cut out of the text.
enum class messageKind { configuration, assertion, messageBox, progress, exit };

struct message {
    messageKind kind;
    /// The text between the tags, Latin-1; empty for an exit message.
    QByteArray payload;
};

/// Cuts tagged messages out of text that arrives in arbitrary pieces.
///
/// Of all complete messages that wait, those of the first kind come first, whatever stands in front of
/// them; each cut drops the text in front of the message. A closing tag without an opening tag in front of
/// it is dropped with the text before it. The cost is linear in the text: nothing is searched twice, and
/// what remains is moved only when it is the smaller part.
class messageBuffer
{
public:
    void append(const QByteArray &text);
    /// Cuts out the next message; none when no message is complete.
    std::optional<message> next();
    /// Bytes that wait for a closing tag.
    qsizetype waiting() const { return m_text.size() - m_head; }
    /// Drops all that waits.
    void clear();

private:
    static constexpr size_t kinds = 5;

    qsizetype findClosingTag(size_t kind);
    void cut(qsizetype end);

    QByteArray m_text;
    /// Where the text begins that has not been cut yet.
    qsizetype m_head = 0;
    /// Per kind, in front of where no closing tag of it begins.
    std::array<qsizetype, kinds> m_searched{};
};
