#include "progressctl/theme.h"

#include "progressctl/screen.h"
#include "progressctl/textFile.h"
#include "progressctl/verbs.h"

#include <algorithm>

namespace
{

bool has(const settingEntries &theme, const std::string &key)
{
    return std::any_of(theme.begin(), theme.end(), [&key](const auto &entry) { return entry.first == key; });
}

void addScreen(settingEntries &theme)
{
    const auto screen = has(theme, "screenGeometry") ? std::nullopt : findPrimaryScreen();
    if (!screen)
        return;
    theme.emplace_back("screenGeometry",
                       std::to_string(screen->width) + ',' + std::to_string(screen->height));
    if (!has(theme, "paintOffset"))
        theme.emplace_back("paintOffset", std::to_string(screen->x) + '|' + std::to_string(screen->y));
}

} // namespace

void addLookOptions(CLI::App &verb, lookOptions &look)
{
    verb.add_option("--layout", look.layout, "Of a daemon that is started: fitted, or grid")
        ->check(oneOf({"fitted", "grid"}))
        ->capture_default_str();
    verb.add_option("--theme", look.theme, "Of a daemon that is started: light, dark, auto, none or a file")
        ->capture_default_str();
}

settingEntries loadTheme(const std::string &nameOrPath)
{
    if (nameOrPath == "none")
        return {};
    if (nameOrPath == "light" || nameOrPath == "dark" || nameOrPath == "auto")
        return {{"windowTheme", nameOrPath}};
    return entriesFromText(readTextFile(nameOrPath), nameOrPath);
}

settingEntries loadLook(const lookOptions &look)
{
    settingEntries all{{"windowLayout", look.layout}, {"estimate", "adaptive"}};
    settingEntries theme = loadTheme(look.theme);
    if (!theme.empty())
        addScreen(theme);
    all.insert(all.end(), theme.begin(), theme.end());
    return all;
}
