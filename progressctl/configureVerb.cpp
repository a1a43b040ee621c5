#include "progressctl/exitStatus.h"
#include "progressctl/theme.h"
#include "progressctl/verbs.h"

#include <memory>

namespace
{

struct settingsArguments {
    std::vector<std::string> entries;
    std::string theme;
};

int configure(const commonOptions &common, const settingsArguments &given)
{
    settingEntries all;
    if (!given.theme.empty())
        all = loadTheme(given.theme);
    for (const std::string &text : given.entries)
        all.push_back(entryFromText(text));
    if (all.empty())
        throw failure(statusUsage, "nothing to configure: give KEY=VALUE or --file");
    tellMissingFonts(all);
    return actOnce(common, [&all](progressClient &client) { client.configure(all); });
}

} // namespace

void addConfigureVerb(commandLineSetup &setup)
{
    auto given = std::make_shared<settingsArguments>();
    auto *verb = setup.app.add_subcommand("configure", "Changes the look of the windows");
    std::string keys;
    for (const std::string &each : settingKeys())
        keys += ' ' + each;
    verb->footer("\nKeys:" + keys + '.');
    verb->add_option("ENTRY", given->entries, "KEY=VALUE, after those of the file")->type_name("KEY=VALUE");
    verb->add_option("--file", given->theme, "A file with a KEY=VALUE a line, or light, dark or auto");
    verb->callback(
        [&setup, given] { setup.chosen = [&setup, given] { return configure(setup.common, *given); }; });
}
