#include "client/protocolText.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace
{

using error = progressClient::error;
using event = progressClient::event;

/// A daemon hangs up on who sends more without an end, in bytes.
constexpr std::size_t longestPayload = 16 * 1024 * 1024 - 64;
constexpr unsigned presetFlag = 0x100;
constexpr std::size_t maxButtons = 10;

[[noreturn]] void throwBadArgument(const std::string &text)
{
    throw error(error::reason::badArgument, text);
}

/// The number behind `prefix`, which ends at `text`'s end or at `stop`.
std::optional<int> numberBehind(std::string_view text, std::string_view prefix, char stop = '\0')
{
    if (text.substr(0, prefix.size()) != prefix)
        return std::nullopt;
    return leadingNumber(text.substr(prefix.size()), stop);
}

constexpr std::pair<std::string_view, event::kind> plainEvents[] = {
    {"isShown", event::kind::isShown},         {"isHidden", event::kind::isHidden},
    {"isActivated", event::kind::isActivated}, {"shutDown", event::kind::shutDown},
    {"closed", event::kind::closed},
};

struct namedKind {
    std::string_view name;
    received::kind what;
};
constexpr namedKind kinds[] = {{"event", received::kind::event},
                               {"answer", received::kind::answer},
                               {"claimed", received::kind::claimed}};

const namedKind *kindNamed(std::string_view name)
{
    for (const namedKind &each : kinds) {
        if (each.name == name)
            return &each;
    }
    return nullptr;
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

std::string message(std::string_view tag, std::string_view payload)
{
    std::string closing = "</";
    closing.append(tag).append(">");
    if (payload.find('\0') != std::string_view::npos)
        throwBadArgument("a zero byte cannot be sent");
    if (payload.find(closing) != std::string_view::npos)
        throwBadArgument('"' + closing + "\" cannot be sent: the daemon would take it for the end");
    if (payload.size() > longestPayload)
        throwBadArgument("a text of more than 16 MiB cannot be sent");
    std::string made;
    made.reserve(2 * tag.size() + payload.size() + 5);
    return made.append("<").append(tag).append(">").append(payload).append(closing);
}

std::string_view field(std::string_view what, std::string_view text, std::string_view separator)
{
    if (text.find(separator) != std::string_view::npos)
        throwBadArgument(std::string(what) + " cannot hold \"" + std::string(separator) +
                         "\": the daemon would take it for the next field");
    return text;
}

std::string boxPayload(const progressClient::question &box)
{
    constexpr std::string_view separator = "[#]";
    if (box.buttons.empty() || box.buttons.size() > maxButtons)
        throwBadArgument("a box has one to ten buttons");
    const auto isPreset = [&box](progressClient::button each) { return each == box.preset; };
    if (box.preset != progressClient::button::none &&
        std::none_of(box.buttons.begin(), box.buttons.end(), isPreset))
        throwBadArgument("the default button is none of the box's buttons");

    std::string payload = std::to_string(static_cast<int>(box.picture));
    payload.append(separator).append(field("a title", box.title, separator));
    payload.append(separator).append(field("a text", box.text, separator));
    for (const auto each : box.buttons) {
        const unsigned number = static_cast<unsigned>(each) | (isPreset(each) ? presetFlag : 0);
        payload.append(separator).append(std::to_string(number));
    }
    return payload;
}

std::optional<received> takeReceived(std::string &buffer)
{
    for (;;) {
        buffer.erase(0, buffer.find('<'));
        const std::size_t nameEnd = buffer.find('>');
        if (nameEnd == std::string::npos)
            return std::nullopt;
        const std::string name = buffer.substr(1, nameEnd - 1);
        const namedKind *kind = kindNamed(name);
        if (!kind) {
            buffer.erase(0, 1);
            continue;
        }
        const std::size_t start = nameEnd + 1;
        const std::size_t end = buffer.find("</" + name + '>', start);
        if (end == std::string::npos)
            return std::nullopt;
        received taken{kind->what, buffer.substr(start, end - start)};
        buffer.erase(0, end + name.size() + 3);
        return taken;
    }
}

event eventFromText(std::string text)
{
    using kind = event::kind;
    event made;
    const auto *plain = std::find_if(std::begin(plainEvents), std::end(plainEvents),
                                     [&text](const auto &each) { return each.first == text; });
    if (plain != std::end(plainEvents))
        made.what = plain->second;
    else if (const auto slot = numberBehind(text, "clicked:")) {
        made.what = kind::clicked;
        made.slot = *slot;
    } else if (const auto percent = numberBehind(text, "totalProgress=", '|')) {
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
