#pragma once

#include <QByteArrayView>

#include <cstring>

/// The kinds of message, in the order in which the ports' servers cut them out of the text. The last two are
/// the local channels' alone.
enum class messageKind { configuration, assertion, messageBox, progress, exit, events, claim };

struct messageTags {
    messageKind kind;
    QByteArrayView opening;
    QByteArrayView closing; ///< empty for a message that is one tag
};

inline constexpr messageTags allTags[] = {
    {messageKind::configuration, "<configuration>", "</configuration>"},
    {messageKind::assertion, "<assert>", "</assert>"},
    {messageKind::messageBox, "<msgbox>", "</msgbox>"},
    {messageKind::progress, "<progress>", "</progress>"},
    {messageKind::exit, "<exit/>", ""},
    {messageKind::events, "<events/>", ""},
    {messageKind::claim, "<claim/>", ""},
};
/// How many of them the ports know.
inline constexpr size_t portKinds = 5;

/// The `Word`s at both ends of `size` bytes, which cover all of them, are the same.
template <typename Word> bool haveSameEnds(const char *one, const char *other, size_t size)
{
    const auto same = [one, other](size_t at) {
        Word words[2];
        std::memcpy(&words[0], one + at, sizeof(Word));
        std::memcpy(&words[1], other + at, sizeof(Word));
        return words[0] == words[1];
    };
    return same(0) && same(size - sizeof(Word));
}

/// As the view's own, but without a call for tags and keywords: this is asked several times for each message.
inline bool beginsWith(QByteArrayView text, QByteArrayView start)
{
    const auto size = static_cast<size_t>(start.size());
    if (text.size() < start.size())
        return false;
    if (size >= 8 && size <= 16)
        return haveSameEnds<quint64>(text.data(), start.data(), size);
    if (size >= 4 && size < 8)
        return haveSameEnds<quint32>(text.data(), start.data(), size);
    return std::memcmp(text.data(), start.data(), size) == 0;
}

/// Where `tag` begins in `text` at `from` or later, -1 for nowhere. Between tags there are rarely other "<",
/// so this is faster than searches that prepare themselves for longer needles.
inline qsizetype indexOfTag(QByteArrayView text, QByteArrayView tag, qsizetype from = 0)
{
    if (from >= text.size())
        return -1; // also where there are no bytes at all, to which nothing points
    const char *at = text.begin() + from;
    while ((at = static_cast<const char *>(std::memchr(at, '<', static_cast<size_t>(text.end() - at))))) {
        if (beginsWith({at, text.end()}, tag))
            return at - text.begin();
        ++at;
    }
    return -1;
}

struct message {
    messageKind kind;
    /// The bytes between the tags; empty for a message that is one tag. Valid until its buffer is touched
    /// again.
    QByteArrayView payload;
};
