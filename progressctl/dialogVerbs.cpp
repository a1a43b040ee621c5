#include "progressctl/commandLine.h"
#include "progressctl/pipeInput.h"
#include "wire/recordLine.h"
#include "wire/words.h"

#include <memory>

namespace
{

struct commandWords {
    int slot = 0;
    std::string text;
};

/// A verb that sends one command; what it is to be given is added.
class commandVerb
{
public:
    using action = std::function<void(progressClient &, const commandWords &)>;

    commandVerb(commandLineSetup &setup, const std::string &name, const std::string &help, const action &act)
        : m_verb(setup.app.add_subcommand(name, help)), m_given(std::make_shared<commandWords>())
    {
        m_verb->callback([&setup, act, given = m_given] {
            actOnce(setup.common, [&](progressClient &to) { act(to, *given); });
        });
    }
    commandVerb &withSlot()
    {
        m_verb->add_option("SLOT", m_given->slot, "Slot, 0 to 9")
            ->required()
            ->check(CLI::Range(0, progressClient::slotCount - 1));
        return *this;
    }
    commandVerb &withText(const std::string &name, const std::string &help, const CLI::Validator &check = {})
    {
        m_verb->add_option(name, m_given->text, help)->required()->check(check);
        return *this;
    }

private:
    CLI::App *m_verb;
    std::shared_ptr<commandWords> m_given;
};

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
    commandVerb(setup, "update", "Moves a bar",
                [](progressClient &to, const commandWords &given) {
                    to.updateBar(given.slot, percentFrom(given.text).value_or(0));
                })
        .withSlot()
        .withText("PERCENT", "0 to 100, or -1 for a bar that is given up",
                  valueThat([](const std::string &text) { return percentFrom(text).has_value(); },
                            "is not within 0 to 100"));
}

void addBusy(commandLineSetup &setup)
{
    commandVerb(setup, "busy", "Shows or hides the busy window",
                [](progressClient &to, const commandWords &given) {
                    if (given.text != "on")
                        return to.busyOff();
                    to.configure({{"busyPlace", "centre"}});
                    to.busyOn();
                })
        .withText("STATE", "on or off", CLI::IsMember({"on", "off"}));
}

struct settingsArguments {
    std::vector<std::string> entries;
    std::string theme;
};

void configure(const commonOptions &common, const settingsArguments &given)
{
    settingEntries all;
    if (!given.theme.empty())
        all = loadTheme(given.theme);
    for (const std::string &text : given.entries)
        all.push_back(entryFromText(text));
    if (all.empty())
        throw failure(statusUsage, "nothing to configure: give KEY=VALUE or --file");
    actOnce(common, [&all](progressClient &to) { to.configure(all); });
}

void addConfigure(commandLineSetup &setup)
{
    auto given = std::make_shared<settingsArguments>();
    auto *verb = setup.app.add_subcommand("configure", "Changes the look of the windows");
    std::string keys;
    for (const wire::settingForm &each : wire::settingForms)
        keys.append(" ").append(each.key);
    verb->footer("\nKeys:" + keys + ".\n" + setup.app.get_footer());
    verb->add_option("ENTRY", given->entries, "KEY=VALUE, after those of the file")->type_name("KEY=VALUE");
    verb->add_option("--file", given->theme, "A file with a KEY=VALUE a line, or light, dark or auto");
    verb->callback([&setup, given] { configure(setup.common, *given); });
}

void addAmount(commandLineSetup &setup)
{
    const auto isAmount = [](const std::string &text) { return wire::readAmount(text) > 0 || text == "0"; };
    commandVerb(
        setup, "amount", "Says how much there is to do, which makes the estimate better",
        [](progressClient &to, const commandWords &given) { to.setAmount(wire::readAmount(given.text)); })
        .withText("N", "Files, bytes, lines or the like, always in the same unit; 0 takes it back",
                  valueThat(isAmount, "is no amount (1 to 2^53; 0: none)"));
}

} // namespace

void addDialogVerbs(commandLineSetup &setup)
{
    const auto plain = [&](const char *name, const char *help, void (progressClient::*command)()) {
        commandVerb(setup, name, help, [=](progressClient &to, const commandWords &) { (to.*command)(); });
    };
    const auto slot = [&](const char *name, const char *help, void (progressClient::*command)(int)) {
        commandVerb(setup, name, help, [=](progressClient &to, const commandWords &given) {
            (to.*command)(given.slot);
        }).withSlot();
    };
    const auto text = [&](const char *name, const char *help,
                          void (progressClient::*command)(int, std::string_view)) {
        commandVerb(
            setup, name, help,
            [=](progressClient &to, const commandWords &given) { (to.*command)(given.slot, given.text); })
            .withSlot()
            .withText("TEXT", "What it reads");
    };
    text("bar", "Shows a bar, or starts it again", &progressClient::createBar);
    addUpdate(setup);
    slot("pulse", "Moves a bar to and fro, until its next update", &progressClient::pulse);
    slot("remove", "Removes a bar or text", &progressClient::removeBar);
    text("text", "Shows a text line", &progressClient::createText);
    text("update-text", "Changes a text line", &progressClient::updateText);
    slot("remove-text", "Removes a text or bar", &progressClient::removeText);
    text("button", "Shows a button; a click is the event clicked:SLOT", &progressClient::addButton);
    slot("remove-button", "Removes a button", &progressClient::removeButton);
    plain("activate", "Brings the window to the front", &progressClient::activate);
    plain("pause", "Hides the window", &progressClient::messageStart);
    plain("resume", "Brings the window back after pause", &progressClient::messageStop);
    addBusy(setup);
    addAmount(setup);
    addConfigure(setup);
    commandVerb(setup, "send", "Sends a message as it is, tags included",
                [](progressClient &to, const commandWords &given) { to.send(given.text); })
        .withText("MESSAGE", "For example \"<progress>activate</progress>\"");
}
