#include "client/messageText.h"

#include "client/progressError.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace
{

constexpr std::string_view zeroWidthSpace = "\xE2\x80\x8B";
/// Looks like a semicolon.
constexpr std::string_view greekQuestionMark = "\xCD\xBE";

std::string replaced(std::string text, std::string_view part, std::string_view by)
{
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += by.size())
        text.replace(at, part.size(), by);
    return text;
}

} // namespace

void cutBetweenCharacters(std::string &text, std::size_t longest)
{
    if (text.size() <= longest)
        return;
    const auto isInside = [&text](std::size_t at) { return (text[at] & '\xC0') == '\x80'; };
    while (longest > 0 && isInside(longest))
        --longest;
    text.resize(longest);
}

std::optional<int> leadingNumber(std::string_view text, char stop)
{
    int number = 0;
    const char *end = text.data() + text.size();
    const auto [at, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc{} || (at != end && (stop == '\0' || *at != stop)))
        return std::nullopt;
    return number;
}

std::string broken(std::string text, std::string_view mark, std::size_t at)
{
    const std::string by = std::string(mark.substr(0, at)).append(zeroWidthSpace).append(mark.substr(at));
    return replaced(std::move(text), mark, by);
}

std::string carriable(std::string_view text, wire::messageKind kind, std::size_t longest)
{
    constexpr std::size_t afterSlash = 2;
    std::string made(text);
    made.erase(std::remove(made.begin(), made.end(), '\0'), made.end());
    made = broken(std::move(made), wire::tagsOf(kind).closing, afterSlash);
    cutBetweenCharacters(made, longest);
    return made;
}

std::string configurationPayload(const std::vector<std::pair<std::string, std::string>> &entries)
{
    constexpr std::size_t longestValue = 64 * 1024; // the daemon passes over more than 16,384 characters
    std::string payload;
    for (const auto &[key, value] : entries) {
        if (key.find_first_of(";=<") != std::string::npos)
            throw progressError(progressError::reason::badArgument,
                                "a setting's key cannot hold \";\", \"=\" or \"<\"");
        std::string carried = carriable(value, wire::messageKind::configuration, longestValue);
        payload.append(key).append("=").append(replaced(std::move(carried), ";", greekQuestionMark)) += ';';
    }
    return payload;
}

std::optional<received> takeReceived(std::string &buffer)
{
    for (;;) {
        buffer.erase(0, buffer.find('<'));
        const auto *tags =
            std::find_if(std::begin(wire::allReplies), std::end(wire::allReplies),
                         [&](const auto &each) { return wire::beginsWith(buffer, each.opening); });
        if (tags == std::end(wire::allReplies)) {
            if (buffer.find('>') == std::string::npos)
                return std::nullopt;
            buffer.erase(0, 1);
            continue;
        }
        const std::size_t start = tags->opening.size();
        const std::size_t end = buffer.find(tags->closing, start);
        if (end == std::string::npos)
            return std::nullopt;
        received taken{tags->kind, buffer.substr(start, end - start)};
        buffer.erase(0, end + tags->closing.size());
        return taken;
    }
}
