#include "progressctl/commandLine.h"
#include "progressctl/look.h"
#include "progressctl/pipeInput.h"
#include "wire/recordLine.h"

#include <memory>

namespace
{

struct slotArguments {
    int slot = 0;
    std::string text;
};

void addSlot(CLI::App *verb, slotArguments &given)
{
    verb->add_option("SLOT", given.slot, "Slot, 0 to 9")
        ->required()
        ->check(CLI::Range(0, progressClient::slotCount - 1));
}

using action = std::function<void(progressClient &, const slotArguments &)>;

/// A verb that sends one command. Gives the verb for its slotArguments to be added.
CLI::App *addVerb(commandLineSetup &setup, const std::string &name, const std::string &help,
                  const std::shared_ptr<slotArguments> &given, const action &act)
{
    auto *verb = setup.app.add_subcommand(name, help);
    verb->callback([&setup, given, act] {
        setup.chosen = [&setup, given, act] {
            return actOnce(setup.common, [&](progressClient &client) { act(client, *given); });
        };
    });
    return verb;
}

void addPlainVerb(commandLineSetup &setup, const std::string &name, const std::string &help,
                  void (progressClient::*command)())
{
    addVerb(setup, name, help, std::make_shared<slotArguments>(),
            [command](progressClient &client, const slotArguments &) { (client.*command)(); });
}

void addSlotVerb(commandLineSetup &setup, const std::string &name, const std::string &help,
                 void (progressClient::*command)(int))
{
    auto given = std::make_shared<slotArguments>();
    auto *verb =
        addVerb(setup, name, help, given,
                [command](progressClient &client, const slotArguments &all) { (client.*command)(all.slot); });
    addSlot(verb, *given);
}

void addTextVerb(commandLineSetup &setup, const std::string &name, const std::string &help,
                 void (progressClient::*command)(int, std::string_view))
{
    auto given = std::make_shared<slotArguments>();
    auto *verb =
        addVerb(setup, name, help, given, [command](progressClient &client, const slotArguments &all) {
            (client.*command)(all.slot, all.text);
        });
    addSlot(verb, *given);
    verb->add_option("TEXT", given->text, "What it reads")->required();
}

/// As the lines of `pipe`: a fraction does not count, and a "%" may follow.
std::optional<int> percentFrom(const std::string &text)
{
    const auto number = numberAtFront(text);
    if (!number || (!number->rest.empty() && number->rest != "%") ||
        number->whole < progressClient::givenUp || number->whole > 100)
        return std::nullopt;
    return number->whole;
}

void addUpdate(commandLineSetup &setup)
{
    auto given = std::make_shared<slotArguments>();
    auto *verb =
        addVerb(setup, "update", "Moves a bar", given, [](progressClient &client, const slotArguments &all) {
            client.updateBar(all.slot, percentFrom(all.text).value_or(0));
        });
    addSlot(verb, *given);
    verb->add_option("PERCENT", given->text, "0 to 100")->required()->check([](const std::string &text) {
        return percentFrom(text) ? std::string() : "it is 0 to 100, not \"" + text + '"';
    });
}

void addBusy(commandLineSetup &setup)
{
    auto given = std::make_shared<slotArguments>();
    auto *verb = addVerb(setup, "busy", "Shows or hides the busy window", given,
                         [](progressClient &client, const slotArguments &all) {
                             if (all.text != "on")
                                 return client.busyOff();
                             client.configure({{"busyPlace", "centre"}});
                             client.busyOn();
                         });
    verb->add_option("STATE", given->text, "on or off")->required()->check(oneOf({"on", "off"}));
}

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
    return actOnce(common, [&all](progressClient &client) { client.configure(all); });
}

void addConfigure(commandLineSetup &setup)
{
    auto given = std::make_shared<settingsArguments>();
    auto *verb = setup.app.add_subcommand("configure", "Changes the look of the windows");
    verb->footer("\nKeys:" + settingKeys() + '.');
    verb->add_option("ENTRY", given->entries, "KEY=VALUE, after those of the file")->type_name("KEY=VALUE");
    verb->add_option("--file", given->theme, "A file with a KEY=VALUE a line, or light, dark or auto");
    verb->callback(
        [&setup, given] { setup.chosen = [&setup, given] { return configure(setup.common, *given); }; });
}

void addAmount(commandLineSetup &setup)
{
    auto given = std::make_shared<slotArguments>();
    auto *verb = addVerb(setup, "amount", "Says how much there is to do, which makes the estimate better",
                         given, [](progressClient &client, const slotArguments &all) {
                             client.setAmount(wire::readAmount(all.text));
                         });
    verb->add_option("N", given->text, "Files, bytes, lines or the like, always in the same unit")
        ->required()
        ->check([](const std::string &text) {
            return wire::readAmount(text) > 0 || text == "0"
                       ? std::string()
                       : '"' + text + "\" is no amount (1 to 2^53; 0: none)";
        });
}

void addSend(commandLineSetup &setup)
{
    auto given = std::make_shared<slotArguments>();
    auto *verb = addVerb(setup, "send", "Sends a message as it is, tags included", given,
                         [](progressClient &client, const slotArguments &all) { client.send(all.text); });
    verb->add_option("MESSAGE", given->text, "For example \"<progress>activate</progress>\"")->required();
}

} // namespace

void addDialogVerbs(commandLineSetup &setup)
{
    using client = progressClient;
    addTextVerb(setup, "bar", "Shows a bar, or starts it again", &client::createBar);
    addUpdate(setup);
    addSlotVerb(setup, "pulse", "Moves a bar to and fro, until its next update", &client::pulse);
    addSlotVerb(setup, "remove", "Removes a bar or text", &client::removeBar);
    addTextVerb(setup, "text", "Shows a text line", &client::createText);
    addTextVerb(setup, "update-text", "Changes a text line", &client::updateText);
    addSlotVerb(setup, "remove-text", "Removes a text or bar", &client::removeText);
    addTextVerb(setup, "button", "Shows a button; a click is the event clicked:SLOT", &client::addButton);
    addSlotVerb(setup, "remove-button", "Removes a button", &client::removeButton);
    addPlainVerb(setup, "activate", "Brings the window to the front", &client::activate);
    addPlainVerb(setup, "pause", "Hides the window", &client::messageStart);
    addPlainVerb(setup, "resume", "Brings the window back after pause", &client::messageStop);
    addBusy(setup);
    addAmount(setup);
    addConfigure(setup);
    addSend(setup);
}
