#include "progressctl/settings.h"

#include "progressctl/common.h"
#include "progressctl/exitStatus.h"
#include "progressctl/writer.h"
#include "wire/words.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <string_view>

namespace
{

/// The names that the daemon's toolkit takes, those of SVG.
constexpr std::string_view colourNames =
    " aliceblue antiquewhite aqua aquamarine azure beige bisque black blanchedalmond blue blueviolet brown "
    "burlywood cadetblue chartreuse chocolate coral cornflowerblue cornsilk crimson cyan darkblue darkcyan "
    "darkgoldenrod darkgray darkgreen darkgrey darkkhaki darkmagenta darkolivegreen darkorange darkorchid "
    "darkred darksalmon darkseagreen darkslateblue darkslategray darkslategrey darkturquoise darkviolet "
    "deeppink deepskyblue dimgray dimgrey dodgerblue firebrick floralwhite forestgreen fuchsia gainsboro "
    "ghostwhite gold goldenrod gray green greenyellow grey honeydew hotpink indianred indigo ivory khaki "
    "lavender lavenderblush lawngreen lemonchiffon lightblue lightcoral lightcyan lightgoldenrodyellow "
    "lightgray lightgreen lightgrey lightpink lightsalmon lightseagreen lightskyblue lightslategray "
    "lightslategrey lightsteelblue lightyellow lime limegreen linen magenta maroon mediumaquamarine "
    "mediumblue mediumorchid mediumpurple mediumseagreen mediumslateblue mediumspringgreen mediumturquoise "
    "mediumvioletred midnightblue mintcream mistyrose moccasin navajowhite navy oldlace olive olivedrab "
    "orange orangered orchid palegoldenrod palegreen paleturquoise palevioletred papayawhip peachpuff peru "
    "pink plum powderblue purple red rosybrown royalblue saddlebrown salmon sandybrown seagreen seashell "
    "sienna silver skyblue slateblue slategray slategrey snow springgreen steelblue tan teal thistle tomato "
    "transparent turquoise violet wheat white whitesmoke yellow yellowgreen ";

std::vector<std::string> split(const std::string &text, char separator)
{
    std::vector<std::string> parts(1);
    for (const char each : text) {
        if (each == separator)
            parts.emplace_back();
        else
            parts.back() += each;
    }
    return parts;
}

bool isOneOf(std::string_view words, const std::string &word)
{
    return word.find(' ') == std::string::npos && words.find(' ' + word + ' ') != std::string_view::npos;
}

/// An empty one is unset.
bool isColour(const std::string &text)
{
    if (text.empty())
        return true;
    if (text.front() == '#') {
        constexpr std::string_view digitCounts = " 3 6 8 9 12 ";
        return text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos &&
               isOneOf(digitCounts, std::to_string(text.size() - 1));
    }
    std::string plain;
    for (const char each : text) {
        if (each != ' ')
            plain += static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
    }
    return isOneOf(colourNames, plain);
}

/// A family, with a size or with all that the toolkit writes down; an empty one stays as it is.
bool isFont(const std::string &text)
{
    const std::vector<std::string> fields = split(text, ',');
    const bool isCount = fields.size() <= 2 || (fields.size() >= 10 && fields.size() <= 17);
    const bool hasSize = fields.size() < 2 || std::strtod(fields[1].c_str(), nullptr) > 0;
    return text.empty() || (isCount && hasSize && !fields[0].empty());
}

void check(wire::setting which, const std::string &value)
{
    using wire::valueKind;
    const auto &[name, kind, words] = wire::formOf(which);
    const std::string key(name);
    if (kind == valueKind::words && !wire::wordIndex(which, value)) {
        std::string all;
        for (const std::string_view word : words)
            all.append(word.empty() ? "" : " ").append(word);
        throw failure(statusUsage, key + " is one of" + all + " (not \"" + value + "\")");
    }
    for (const std::string &each : split(value, '|')) {
        if (kind == valueKind::colours && !isColour(each))
            throw failure(statusUsage, key + ": there is no colour \"" + each + '"');
        if (kind == valueKind::fonts && !isFont(each))
            throw failure(statusUsage, key + ": \"" + each + "\" is no font (FAMILY or FAMILY,SIZE)");
    }
}

/// The family that would be shown in the place of `family`, or nothing where that cannot be found out.
std::string shownFamily(const std::string &family)
{
    writer match({"sh", "-c", "exec fc-match -f '%{family}' -- \"$0\" 2>/dev/null", family});
    const std::string shown = match.outputToEnd();
    return match.exitStatus() == 0 ? shown : std::string();
}

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char each) { return static_cast<char>(std::tolower(each)); });
    return text;
}

void tellIfMissing(const std::string &family)
{
    constexpr std::string_view generic = " sans sans-serif sansserif serif monospace mono system-ui ";
    std::string plain = lower(family);
    plain.erase(std::remove(plain.begin(), plain.end(), ' '), plain.end());
    if (plain.empty() || isOneOf(generic, plain))
        return;
    const std::string shown = shownFamily(family);
    const std::vector<std::string> names = split(lower(shown), ',');
    if (!shown.empty() && std::find(names.begin(), names.end(), lower(family)) == names.end())
        complain("there is no font \"" + family + "\" here, " + shown + " is shown");
}

} // namespace

std::pair<std::string, std::string> entryFromText(const std::string &text)
{
    const std::size_t equals = text.find('=');
    const std::string key = text.substr(0, equals);
    if (equals == std::string::npos)
        throw failure(statusUsage, "\"" + text + "\" is no KEY=VALUE");
    const auto known = wire::settingNamed(key);
    if (!known)
        throw failure(statusUsage, "there is no setting \"" + key + "\"");
    check(*known, text.substr(equals + 1));
    return {key, text.substr(equals + 1)};
}

settingEntries entriesFromText(const std::string &text, const std::string &name)
{
    settingEntries entries;
    std::size_t number = 0;
    for (std::string line : split(text, '\n')) {
        ++number;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || line.front() == '#')
            continue;
        try {
            entries.push_back(entryFromText(line));
        } catch (const failure &problem) {
            throw failure(problem.status(), name + ":" + std::to_string(number) + ": " + problem.what());
        }
    }
    return entries;
}

std::vector<std::string> settingKeys()
{
    std::vector<std::string> keys;
    for (const wire::settingForm &each : wire::settingForms)
        keys.emplace_back(each.key);
    return keys;
}

void tellMissingFonts(const settingEntries &entries)
{
    for (const auto &[key, value] : entries) {
        if (key != "windowFonts")
            continue;
        for (const std::string &font : split(value, '|'))
            tellIfMissing(font.substr(0, font.find(',')));
    }
}
