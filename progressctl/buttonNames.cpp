#include "progressctl/buttonNames.h"

#include "wire/words.h"

#include <algorithm>
#include <cctype>

namespace
{

using button = progressClient::button;

std::string plain(std::string_view name)
{
    std::string made;
    for (const char letter : name) {
        if (letter != '-' && letter != '_' && letter != ' ')
            made += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return made;
}

const wire::button *find(button which)
{
    const auto *found =
        std::find_if(std::begin(wire::buttons), std::end(wire::buttons),
                     [which](const wire::button &each) { return each.number == unsigned(which); });
    return found == std::end(wire::buttons) ? nullptr : found;
}

} // namespace

std::string_view nameOf(button which)
{
    const wire::button *found = find(which);
    return found ? found->name : "none";
}

std::optional<button> buttonFromName(std::string_view name)
{
    const std::string wanted = plain(name);
    for (const wire::button &each : wire::buttons) {
        if (plain(each.name) == wanted)
            return static_cast<button>(each.number);
    }
    return std::nullopt;
}

bool isAccepting(button which)
{
    const wire::button *found = find(which);
    return found && found->accepts;
}

std::vector<std::string> buttonNames()
{
    std::vector<std::string> names;
    for (const wire::button &each : wire::buttons)
        names.emplace_back(each.name);
    return names;
}

std::string allButtonNames()
{
    std::string all;
    for (const wire::button &each : wire::buttons)
        all.append(all.empty() ? "" : ", ").append(each.name);
    return all;
}
