#include "client/progressctl/theme.h"

#include "client/progressctl/builtInThemes.h"
#include "client/progressctl/exitStatus.h"
#include "client/progressctl/screen.h"
#include "client/progressctl/textFile.h"

#include <algorithm>

namespace
{

constexpr const char *keys[] = {"windowFonts",    "busyIndicator", "paintOffset", "screenGeometry",
                                "windowTitle",    "windowPixmap",  "windowIcon",  "windowStyle",
                                "windowControls", "windowModal"};

bool has(const themeEntries &theme, const std::string &key)
{
    return std::any_of(theme.begin(), theme.end(), [&key](const auto &entry) { return entry.first == key; });
}

} // namespace

std::pair<std::string, std::string> entryFromText(const std::string &text)
{
    const std::size_t equals = text.find('=');
    const std::string key = text.substr(0, equals);
    if (equals == std::string::npos)
        throw failure(statusUsage, "\"" + text + "\" is no KEY=VALUE");
    if (std::find(std::begin(keys), std::end(keys), key) == std::end(keys))
        throw failure(statusUsage, "there is no setting \"" + key + "\"");
    return {key, text.substr(equals + 1)};
}

themeEntries entriesFromText(const std::string &text, const std::string &name)
{
    themeEntries entries;
    std::size_t number = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        std::string line = text.substr(at, end - at);
        at = end + 1;
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

themeEntries loadTheme(const std::string &nameOrPath)
{
    if (nameOrPath == "none")
        return {};
    if (nameOrPath == "light")
        return entriesFromText(lightTheme, nameOrPath);
    if (nameOrPath == "dark")
        return entriesFromText(darkTheme, nameOrPath);
    return entriesFromText(readTextFile(nameOrPath), nameOrPath);
}

void applyTheme(progressClient &client, themeEntries theme)
{
    if (theme.empty())
        return;
    const auto screen = has(theme, "screenGeometry") ? std::nullopt : findPrimaryScreen();
    if (screen) {
        theme.emplace_back("screenGeometry",
                           std::to_string(screen->width) + ',' + std::to_string(screen->height));
        if (!has(theme, "paintOffset"))
            theme.emplace_back("paintOffset", std::to_string(screen->x) + '|' + std::to_string(screen->y));
    }
    client.configure(theme);
}

void applyTheme(const commonOptions &common, themeEntries theme)
{
    actOnce(common, [&](progressClient &client) { applyTheme(client, std::move(theme)); });
}
