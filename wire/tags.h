#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

/// The messages' tags, and how they are found in what arrives.
namespace wire
{

/// What clients send, in the order in which the ports' servers cut it out of the text. The last three are
/// the local channels' alone.
enum class messageKind { configuration, assertion, messageBox, progress, exit, events, claim, stop };

/// What a daemon sends.
enum class replyKind { event, answer, claimed };

template <typename Kind> struct tagPair {
    Kind kind;
    std::string_view opening;
    std::string_view closing; ///< empty for a message that is one tag
};
using messageTags = tagPair<messageKind>;

inline constexpr messageTags allTags[] = {
    {messageKind::configuration, "<configuration>", "</configuration>"},
    {messageKind::assertion, "<assert>", "</assert>"},
    {messageKind::messageBox, "<msgbox>", "</msgbox>"},
    {messageKind::progress, "<progress>", "</progress>"},
    {messageKind::exit, "<exit/>", ""},
    {messageKind::events, "<events/>", ""},
    {messageKind::claim, "<claim/>", ""},
    {messageKind::stop, "<stop/>", ""},
};
/// How many of them the ports know.
inline constexpr std::size_t portKinds = 5;

inline constexpr tagPair<replyKind> allReplies[] = {
    {replyKind::event, "<event>", "</event>"},
    {replyKind::answer, "<answer>", "</answer>"},
    {replyKind::claimed, "<claimed>", "</claimed>"},
};

constexpr const messageTags &tagsOf(messageKind kind)
{
    return allTags[static_cast<std::size_t>(kind)];
}
constexpr const tagPair<replyKind> &tagsOf(replyKind kind)
{
    return allReplies[static_cast<std::size_t>(kind)];
}

/// `payload`, which must not hold the closing tag, in the tags of its kind.
template <typename Kind> std::string message(Kind kind, std::string_view payload = {})
{
    const auto &[same, opening, closing] = tagsOf(kind);
    std::string made;
    made.reserve(opening.size() + payload.size() + closing.size());
    return made.append(opening).append(payload).append(closing);
}

/// Bytes of one message, from its opening tag up to its closing one, that a local channel takes.
inline constexpr std::size_t longestMessage = std::size_t{16} * 1024 * 1024;

/// The `Word`s at both ends of `size` bytes, which cover all of them, are the same.
template <typename Word> bool haveSameEnds(const char *one, const char *other, std::size_t size)
{
    const auto same = [one, other](std::size_t at) {
        Word words[2];
        std::memcpy(&words[0], one + at, sizeof(Word));
        std::memcpy(&words[1], other + at, sizeof(Word));
        return words[0] == words[1];
    };
    return same(0) && same(size - sizeof(Word));
}

/// As the view's own, but without a call for tags and keywords: this is asked several times for each message.
inline bool beginsWith(std::string_view text, std::string_view start)
{
    const std::size_t size = start.size();
    if (text.size() < size)
        return false;
    if (size >= 8 && size <= 16)
        return haveSameEnds<std::uint64_t>(text.data(), start.data(), size);
    if (size >= 4 && size < 8)
        return haveSameEnds<std::uint32_t>(text.data(), start.data(), size);
    return size == 0 || std::memcmp(text.data(), start.data(), size) == 0;
}

/// Where `tag` begins in `text` at `from` or later; npos for nowhere. Between tags there are rarely other
/// "<", so this is faster than searches that prepare themselves for longer needles.
inline std::size_t indexOfTag(std::string_view text, std::string_view tag, std::size_t from = 0)
{
    while (from < text.size()) {
        const void *found = std::memchr(text.data() + from, '<', text.size() - from);
        if (!found)
            break;
        from = static_cast<std::size_t>(static_cast<const char *>(found) - text.data());
        if (beginsWith(text.substr(from), tag))
            return from;
        ++from;
    }
    return std::string_view::npos;
}

} // namespace wire
