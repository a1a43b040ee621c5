#include "progressctl/buttonNames.h"

#include <algorithm>
#include <cctype>

namespace
{

using button = progressClient::button;

struct namedButton {
    std::string_view name;
    button which;
    bool accepts;
};

constexpr namedButton buttons[] = {
    {"ok", button::ok, true},
    {"yes", button::yes, true},
    {"yes-to-all", button::yesToAll, true},
    {"no", button::no, false},
    {"no-to-all", button::noToAll, false},
    {"cancel", button::cancel, false},
    {"close", button::close, false},
    {"abort", button::abort, false},
    {"retry", button::retry, true},
    {"ignore", button::ignore, true},
    {"save", button::save, true},
    {"save-all", button::saveAll, true},
    {"discard", button::discard, false},
    {"open", button::open, true},
    {"apply", button::apply, true},
    {"reset", button::reset, true},
    {"restore-defaults", button::restoreDefaults, true},
    {"help", button::help, true},
};

std::string plain(std::string_view name)
{
    std::string made;
    for (const char letter : name) {
        if (letter != '-' && letter != '_' && letter != ' ')
            made += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return made;
}

const namedButton *find(button which)
{
    const auto *found = std::find_if(std::begin(buttons), std::end(buttons),
                                     [which](const namedButton &each) { return each.which == which; });
    return found == std::end(buttons) ? nullptr : found;
}

} // namespace

std::string_view nameOf(button which)
{
    const namedButton *found = find(which);
    return found ? found->name : "none";
}

std::optional<button> buttonFromName(std::string_view name)
{
    const std::string wanted = plain(name);
    for (const namedButton &each : buttons) {
        if (plain(each.name) == wanted)
            return each.which;
    }
    return std::nullopt;
}

bool isAccepting(button which)
{
    const namedButton *found = find(which);
    return found && found->accepts;
}

std::vector<std::string> buttonNames()
{
    std::vector<std::string> names;
    for (const namedButton &each : buttons)
        names.emplace_back(each.name);
    return names;
}

std::string allButtonNames()
{
    std::string all;
    for (const namedButton &each : buttons)
        all.append(all.empty() ? "" : ", ").append(each.name);
    return all;
}
