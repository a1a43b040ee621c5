#include "progressctl/texts.h"

#include "client/messageText.h"
#include "language/language.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

namespace
{

constexpr std::string_view tagNames[] = {"a",   "b",     "big", "i",  "s", "span",
                                         "sub", "small", "sup", "tt", "u", "markup"};
constexpr std::pair<std::string_view, char> entities[] = {
    {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};

struct tag {
    std::string_view name;
    bool opens = false;
    bool closes = false;
    std::size_t size = 0;
};

std::optional<tag> tagAtFront(std::string_view text)
{
    const std::size_t end = text.find_first_of("<>", 1);
    if (end == text.npos || text[end] == '<')
        return std::nullopt;
    std::string_view inner = text.substr(1, end - 1);
    const bool isEnd = !inner.empty() && inner.front() == '/';
    const bool isBoth = !isEnd && !inner.empty() && inner.back() == '/';
    inner.remove_prefix(isEnd ? 1 : 0);
    inner.remove_suffix(isBoth ? 1 : 0);
    const std::string_view name = inner.substr(0, inner.find(' '));
    if (std::ranges::find(tagNames, name) == std::end(tagNames))
        return std::nullopt;
    return tag{name, !isEnd, isEnd || isBoth, end + 1};
}

std::optional<std::string> characterNamed(std::string_view name)
{
    for (const auto &[known, character] : entities) {
        if (known == name)
            return std::string(1, character);
    }
    if (!name.starts_with('#'))
        return std::nullopt;
    const bool isHex = name.starts_with("#x");
    const std::string_view digits = name.substr(isHex ? 2 : 1);
    unsigned code = 0;
    const auto [end, failure] =
        std::from_chars(digits.data(), digits.data() + digits.size(), code, isHex ? 16 : 10);
    const bool isWhole = failure == std::errc{} && end == digits.data() + digits.size();
    const bool isCharacter = code > 0 && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
    // A path is what the standard library converts.
    return isWhole && isCharacter ? std::optional(std::filesystem::path(std::u32string(1, code)).string())
                                  : std::nullopt;
}

/// Appends what stands for the front of `text`, which is "&", and says how much of it that was.
std::size_t takeEntity(std::string_view text, std::string &made)
{
    const std::size_t end = std::min(text.find(';'), text.size());
    const auto character = end < text.size() ? characterNamed(text.substr(1, end - 1)) : std::nullopt;
    made += character.value_or("&");
    return character ? end + 1 : 1;
}

/// What can be pressed together with Alt.
bool isLetter(char each)
{
    return std::isalnum(static_cast<unsigned char>(each)) || static_cast<unsigned char>(each) >= 0x80;
}

} // namespace

std::string withoutEscapes(std::string_view text)
{
    std::string made;
    for (std::size_t i = 0; i < text.size(); ++i) {
        constexpr std::string_view letters = "nt\\";
        const auto which = text[i] == '\\' && i + 1 < text.size() ? letters.find(text[i + 1]) : letters.npos;
        made += which == letters.npos ? text[i] : "\n \\"[which];
        i += which == letters.npos ? 0 : 1;
    }
    return made;
}

std::string withoutMarkup(const std::string &text)
{
    std::string made;
    std::vector<std::string_view> open;
    for (std::string_view left = text; !left.empty();) {
        const auto found = left.front() == '<' ? tagAtFront(left) : std::nullopt;
        if (found && found->opens)
            open.push_back(found->name);
        if (found && found->closes) {
            if (open.empty() || open.back() != found->name)
                return text;
            open.pop_back();
        }
        if (found) {
            left.remove_prefix(found->size);
        } else if (left.front() == '&') {
            left.remove_prefix(takeEntity(left, made));
        } else {
            made += left.front();
            left.remove_prefix(1);
        }
    }
    return open.empty() ? made : text;
}

std::string labelFromMnemonic(std::string_view text)
{
    std::string made;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : ' ';
        if (text[i] == '&')
            made += "&&";
        else
            made += text[i] == '_' && isLetter(next) ? '&' : text[i];
        if (text[i] == '_' && next == '_')
            ++i;
    }
    return made;
}

std::string oneLine(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char each) { return each < ' '; }, ' ');
    return text;
}

std::string safeName(std::string text)
{
    constexpr std::size_t longest = 100;
    cutBetweenCharacters(text, longest);
    std::replace_if(
        text.begin(), text.end(),
        [](unsigned char each) { return each < ' ' || each == '/' || each == 0x7F; }, '_');
    if (!text.empty() && text.front() == '.')
        text.front() = '_';
    return text;
}

std::string translatedRemaining(long long seconds)
{
    char time[32];
    if (seconds >= 3600)
        std::snprintf(time, sizeof time, "%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    else
        std::snprintf(time, sizeof time, "%lld:%02lld", seconds / 60, seconds % 60);
    std::string text = translated("%1 remaining");
    return text.replace(std::min(text.find("%1"), text.size()), 2, time);
}
