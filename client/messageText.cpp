#include "client/messageText.h"

#include "wire/words.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace
{

using event = progressClient::event;

constexpr std::string_view zeroWidthSpace = "\xE2\x80\x8B";
/// Looks like a semicolon.
constexpr std::string_view greekQuestionMark = "\xCD\xBE";

[[noreturn]] void throwBadArgument(const std::string &text)
{
    throw progressError(progressError::reason::badArgument, text);
}

std::string replaced(std::string text, std::string_view part, std::string_view by)
{
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; at += by.size())
        text.replace(at, part.size(), by);
    return text;
}

/// "</progress>" becomes two parts with something in between that nobody sees.
std::string broken(std::string text, std::string_view mark, std::size_t at)
{
    const std::string by = std::string(mark.substr(0, at)).append(zeroWidthSpace).append(mark.substr(at));
    return replaced(std::move(text), mark, by);
}

/// Cut to `longest` bytes, but not within a character.
void cut(std::string &text, std::size_t longest)
{
    if (text.size() <= longest)
        return;
    const auto isInside = [&text](std::size_t at) { return (text[at] & '\xC0') == '\x80'; };
    while (longest > 0 && isInside(longest))
        --longest;
    text.resize(longest);
}

std::string boxField(std::string_view text)
{
    // The breaks may double it, and a box has two.
    constexpr std::size_t longest = longestPayload / 4 - 1024;
    return broken(carriable(text, wire::messageKind::messageBox, longest), wire::fieldSeparator, 1);
}

/// The number behind `prefix`, which ends at `text`'s end or at `stop`.
std::optional<int> numberBehind(std::string_view text, std::string_view prefix, char stop = '\0')
{
    if (!wire::beginsWith(text, prefix))
        return std::nullopt;
    return leadingNumber(text.substr(prefix.size()), stop);
}

} // namespace

std::optional<int> leadingNumber(std::string_view text, char stop)
{
    int number = 0;
    const char *end = text.data() + text.size();
    const auto [at, failure] = std::from_chars(text.data(), end, number);
    if (failure != std::errc{} || (at != end && (stop == '\0' || *at != stop)))
        return std::nullopt;
    return number;
}

std::string carriable(std::string_view text, wire::messageKind kind, std::size_t longest)
{
    constexpr std::size_t afterSlash = 2;
    std::string made(text);
    made.erase(std::remove(made.begin(), made.end(), '\0'), made.end());
    made = broken(std::move(made), wire::tagsOf(kind).closing, afterSlash);
    cut(made, longest);
    return made;
}

std::string configurationPayload(const std::vector<std::pair<std::string, std::string>> &entries)
{
    constexpr std::size_t longestValue = 64 * 1024; // the daemon passes over more than 16,384 characters
    std::string payload;
    for (const auto &[key, value] : entries) {
        if (key.find_first_of(";=<") != std::string::npos)
            throwBadArgument("a setting's key cannot hold \";\", \"=\" or \"<\"");
        std::string carried = carriable(value, wire::messageKind::configuration, longestValue);
        payload.append(key).append("=").append(replaced(std::move(carried), ";", greekQuestionMark)) += ';';
    }
    return payload;
}

std::string boxMessage(const progressClient::question &box)
{
    if (box.buttons.empty() || box.buttons.size() > wire::mostButtons)
        throwBadArgument("a box has one to ten buttons");
    const auto isPreset = [&box](progressClient::button each) { return each == box.preset; };
    if (box.preset != progressClient::button::none &&
        std::none_of(box.buttons.begin(), box.buttons.end(), isPreset))
        throwBadArgument("the default button is none of the box's buttons");

    std::string payload = std::to_string(static_cast<int>(box.picture));
    for (const std::string &text : {box.title, box.text})
        payload.append(wire::fieldSeparator).append(boxField(text));
    for (const auto each : box.buttons) {
        const unsigned number = static_cast<unsigned>(each) | (isPreset(each) ? wire::presetFlag : 0);
        payload.append(wire::fieldSeparator).append(std::to_string(number));
    }
    return message(wire::messageKind::messageBox, payload);
}

std::string assertionMessage(std::string_view text)
{
    constexpr auto kind = wire::messageKind::assertion;
    return message(kind, carriable(text, kind));
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

event eventFromText(std::string text)
{
    using kind = event::kind;
    static_assert(static_cast<int>(kind::closed) == static_cast<int>(wire::eventKind::closed) &&
                  static_cast<std::size_t>(kind::other) == wire::eventNames.size());
    event made;
    const auto plain = std::find(wire::eventNames.begin(), wire::eventNames.end(), text);
    if (plain != wire::eventNames.end())
        made.what = static_cast<kind>(plain - wire::eventNames.begin());
    else if (const auto slot = numberBehind(text, wire::nameOf(wire::eventKind::clicked))) {
        made.what = kind::clicked;
        made.slot = *slot;
    } else if (const auto percent = numberBehind(text, wire::nameOf(wire::eventKind::totalProgress), '|')) {
        const std::size_t bar = text.find('|');
        const auto seconds = bar == std::string::npos ? std::nullopt : numberBehind(text.substr(bar), "|");
        if (seconds) {
            made.what = kind::totalProgress;
            made.percent = *percent;
            made.remainingSeconds = *seconds;
        }
    }
    made.text = std::move(text);
    return made;
}
