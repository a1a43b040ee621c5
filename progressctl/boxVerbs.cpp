#include "language/language.h"
#include "progressctl/commandLine.h"
#include "wire/words.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>
#include <optional>

namespace
{

using button = progressClient::button;

struct boxArguments {
    progressClient::question box{{}, {}, {button::yes, button::no}};
    std::optional<std::string> title; ///< none: "Question", in the user's language
    double timeoutSeconds = 0;
};

using numberedNames = std::vector<std::pair<std::string_view, unsigned>>;

numberedNames buttonNames()
{
    numberedNames all;
    for (const wire::button &each : wire::buttons)
        all.emplace_back(each.name, each.number);
    return all;
}

numberedNames iconNames()
{
    numberedNames all;
    for (const std::string_view name : wire::icons)
        all.emplace_back(name, static_cast<unsigned>(all.size()));
    return all;
}

std::string listOf(const numberedNames &all)
{
    std::string names;
    for (const auto &[name, number] : all)
        names.append(names.empty() ? "" : ", ").append(name);
    return names;
}

/// Upper and lower case, blanks, "-" and "_" make no difference.
std::string plain(std::string_view name)
{
    std::string made;
    for (const char letter : name) {
        if (letter != '-' && letter != '_' && letter != ' ')
            made += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return made;
}

/// For an option's value: one of these names, made its number.
CLI::Validator named(const std::string &kind, const numberedNames &all)
{
    const auto replace = [=](std::string &text) {
        const auto found =
            std::ranges::find(all, plain(text), [](const auto &each) { return plain(each.first); });
        if (found == all.end())
            return "there is no " + kind + " \"" + text + "\"; there are " + listOf(all);
        text = std::to_string(found->second);
        return std::string();
    };
    return {replace, "", kind};
}

/// A box that was closed without a button says "none", and no.
int report(button pressed)
{
    const auto *found =
        std::ranges::find(wire::buttons, static_cast<unsigned>(pressed), &wire::button::number);
    const bool isNone = found == std::end(wire::buttons);
    std::printf("%s\n", isNone ? "none" : std::string(found->name).c_str());
    return !isNone && found->accepts ? statusOk : statusRejected;
}

void addTimeout(CLI::App *verb, boxArguments &given)
{
    verb->add_option("--timeout", given.timeoutSeconds,
                     "Seconds to wait for the answer; 0: as long as it takes")
        ->check(secondsWithin(0, 1e6))
        ->capture_default_str();
}

void addAsk(commandLineSetup &setup)
{
    auto given = std::make_shared<boxArguments>();
    auto *verb = setup.app.add_subcommand("ask", "Asks the user and prints the name of the button pressed");
    verb->footer("\nButtons: " + listOf(buttonNames()) + ".\n" + setup.app.get_footer());
    verb->add_option("TEXT", given->box.text, "The question")->required();
    verb->add_option("BUTTON", given->box.buttons, "Names of one to ten buttons (yes no)")
        ->transform(named("button", buttonNames()));
    verb->add_option("--title", given->title, "Title of the box")->default_str("Question");
    verb->add_option("--icon", given->box.picture, listOf(iconNames()))
        ->transform(named("icon", iconNames()))
        ->default_str("question");
    verb->add_option("--default", given->box.preset, "The button that Return presses")
        ->transform(named("button", buttonNames()));
    addTimeout(verb, *given);
    verb->callback([&setup, given] {
        given->box.title = given->title.value_or(translated("Question"));
        progressClient client(setup.common.identifier, setup.common.limit());
        setup.status = report(client.ask(given->box, timeoutOf(given->timeoutSeconds)));
    });
}

void addAssert(commandLineSetup &setup)
{
    auto given = std::make_shared<boxArguments>();
    auto *verb = setup.app.add_subcommand(
        "assert", "Reports a failed assertion; prints yes, yes-to-all, retry, abort or none");
    verb->add_option("TEXT", given->box.text, "The report")->required();
    addTimeout(verb, *given);
    verb->callback([&setup, given] {
        progressClient client(setup.common.identifier, setup.common.limit());
        setup.status = report(client.reportAssertion(given->box.text, timeoutOf(given->timeoutSeconds)));
    });
}

} // namespace

void addBoxVerbs(commandLineSetup &setup)
{
    addAsk(setup);
    addAssert(setup);
}
