#include "progressctl/look.h"

#include "progressctl/commandLine.h"
#include "wire/words.h"

#include <sstream>

namespace
{

void checkWord(wire::setting which, const std::string &value)
{
    const wire::settingForm &form = wire::formOf(which);
    if (form.value != wire::valueKind::words || wire::wordIndex(which, value))
        return;
    std::string words;
    for (const std::string_view word : form.words)
        words.append(word.empty() ? "" : " ").append(word);
    throw failure(statusUsage, std::string(form.key) + " is one of" + words + " (not \"" + value + "\")");
}

settingEntries entriesFromText(const std::string &text, const std::string &name)
{
    settingEntries entries;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
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

} // namespace

std::pair<std::string, std::string> entryFromText(const std::string &text)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos)
        throw failure(statusUsage, "\"" + text + "\" is no KEY=VALUE");
    const std::string key = text.substr(0, equals);
    const auto which = wire::settingNamed(key);
    if (!which)
        throw failure(statusUsage, "there is no setting \"" + key + "\"");
    checkWord(*which, text.substr(equals + 1));
    return {key, text.substr(equals + 1)};
}

void addLookOptions(CLI::App &verb, lookOptions &look)
{
    verb.add_option("--layout", look.layout, "Of a daemon that is started: fitted, or grid")
        ->check(CLI::IsMember({"fitted", "grid"}))
        ->capture_default_str();
    verb.add_option("--theme", look.theme, "Of a daemon that is started: light, dark, auto, none or a file")
        ->capture_default_str();
}

settingEntries loadTheme(const std::string &nameOrPath)
{
    if (nameOrPath == "none")
        return {};
    if (wire::wordIndex(wire::setting::windowTheme, nameOrPath))
        return {{"windowTheme", nameOrPath}};
    return entriesFromText(readTextFile(nameOrPath), nameOrPath);
}

settingEntries loadLook(const lookOptions &look)
{
    settingEntries all{{"windowLayout", look.layout}, {"estimate", "adaptive"}};
    const settingEntries theme = loadTheme(look.theme);
    all.insert(all.end(), theme.begin(), theme.end());
    return all;
}
