#include "client/protocolText.h"

#include <algorithm>
#include <charconv>

namespace
{

using error = progressClient::error;
using event = progressClient::event;

constexpr std::string_view tags[] = {"<configuration>", "</configuration>", "<assert>",
                                     "</assert>",       "<msgbox>",         "</msgbox>",
                                     "<progress>",      "</progress>",      "<exit/>"};
constexpr std::string_view eventOpening = "<event>";
constexpr std::string_view eventClosing = "</event>";
constexpr unsigned presetFlag = 0x100;
constexpr std::size_t maxButtons = 10;

[[noreturn]] void throwBadArgument(const std::string &text)
{
    throw error(error::reason::badArgument, text);
}

/// The length of the UTF-8 character at the front of `text` and its code point, or nothing.
struct codePoint {
    std::size_t length;
    unsigned value;
};

std::optional<codePoint> firstCodePoint(std::string_view text)
{
    const auto byte = [&text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned lead = byte(0);
    const std::size_t length = lead < 0x80       ? 1
                               : lead >> 5 == 6  ? 2
                               : lead >> 4 == 14 ? 3
                               : lead >> 3 == 30 ? 4
                                                 : 0;
    if (length == 0 || length > text.size())
        return std::nullopt;
    unsigned value = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (byte(i) >> 6 != 2)
            return std::nullopt;
        value = value << 6 | (byte(i) & 0x3F);
    }
    constexpr unsigned smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (value < smallest[length] || value > 0x10FFFF)
        return std::nullopt;
    return codePoint{length, value};
}

/// The number behind `prefix`, which ends at `text`'s end or at `stop`.
std::optional<int> numberBehind(std::string_view text, std::string_view prefix, char stop = '\0')
{
    if (text.substr(0, prefix.size()) != prefix)
        return std::nullopt;
    int number = 0;
    const char *end = text.data() + text.size();
    const auto [at, failure] = std::from_chars(text.data() + prefix.size(), end, number);
    if (failure != std::errc{} || (at != end && (stop == '\0' || *at != stop)))
        return std::nullopt;
    return number;
}

} // namespace

std::string latin1FromUtf8(std::string_view text)
{
    std::string made;
    made.reserve(text.size());
    while (!text.empty()) {
        const auto character = firstCodePoint(text);
        if (!character)
            made += text.front();
        else
            made += character->value < 0x100 ? static_cast<char>(character->value) : '?';
        text.remove_prefix(character ? character->length : 1);
    }
    return made;
}

std::string carried(std::string_view what, std::string_view text, std::string_view separator)
{
    const auto refuse = [&](const std::string &found) {
        throwBadArgument(std::string(what) + " cannot hold " + found +
                         ": the protocol has no way to carry it");
    };
    if (text.find('\0') != std::string_view::npos)
        refuse("a zero byte");
    if (!separator.empty() && text.find(separator) != std::string_view::npos)
        refuse('"' + std::string(separator) + '"');
    for (const std::string_view tag : tags) {
        if (text.find(tag) != std::string_view::npos)
            refuse('"' + std::string(tag) + '"');
    }
    return latin1FromUtf8(text);
}

std::string message(std::string_view tag, std::string_view payload)
{
    std::string made;
    made.reserve(2 * tag.size() + payload.size() + 5);
    made.append("<").append(tag).append(">").append(payload).append("</").append(tag).append(">");
    return made;
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
    payload.append(separator).append(carried("a title", box.title, separator));
    payload.append(separator).append(carried("a text", box.text, separator));
    for (const auto each : box.buttons) {
        const unsigned number = static_cast<unsigned>(each) | (isPreset(each) ? presetFlag : 0);
        payload.append(separator).append(std::to_string(number));
    }
    return payload;
}

std::optional<event> takeEvent(std::string &buffer)
{
    const std::size_t end = buffer.find(eventClosing);
    if (end == std::string::npos)
        return std::nullopt;
    const std::size_t opening = buffer.rfind(eventOpening, end);
    const std::size_t start = opening == std::string::npos ? 0 : opening + eventOpening.size();
    event taken = eventFromText(buffer.substr(start, end - start));
    buffer.erase(0, end + eventClosing.size());
    return taken;
}

event eventFromText(std::string text)
{
    using kind = event::kind;
    event made;
    if (text == "isShown")
        made.what = kind::isShown;
    else if (text == "isHidden")
        made.what = kind::isHidden;
    else if (text == "isActivated")
        made.what = kind::isActivated;
    else if (text == "shutDown")
        made.what = kind::shutDown;
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
