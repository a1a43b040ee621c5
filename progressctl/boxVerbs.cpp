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
using icon = progressClient::icon;

struct boxArguments {
    std::optional<std::string> title; ///< none: "Question", in the user's language
    std::string text;
    icon picture = icon::question;
    std::vector<std::string> buttons{"yes", "no"};
    std::string preset;
    double timeoutSeconds = 0; ///< 0: as long as it takes

    progressClient::milliseconds timeout() const
    {
        return timeoutSeconds > 0
                   ? progressClient::milliseconds(static_cast<long long>(timeoutSeconds * 1000))
                   : progressClient::forever;
    }
};

std::string allButtonNames()
{
    std::string all;
    for (const wire::button &each : wire::buttons)
        all.append(all.empty() ? "" : ", ").append(each.name);
    return all;
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

button namedButton(const std::string &name)
{
    for (const wire::button &each : wire::buttons) {
        if (plain(each.name) == plain(name))
            return static_cast<button>(each.number);
    }
    throw failure(statusUsage, "there is no button \"" + name + "\"; there are " + allButtonNames());
}

/// A box that was closed without a button says "none", and no.
int report(button pressed)
{
    const auto *found =
        std::find_if(std::begin(wire::buttons), std::end(wire::buttons),
                     [=](const auto &each) { return each.number == static_cast<unsigned>(pressed); });
    const bool isNone = found == std::end(wire::buttons);
    std::printf("%s\n", isNone ? "none" : std::string(found->name).c_str());
    return !isNone && found->accepts ? statusOk : statusRejected;
}

/// A name, in any case of letters, made the icon's number.
std::string iconNumber(std::string &text)
{
    const auto *found = std::find(wire::icons.begin(), wire::icons.end(), plain(text));
    if (found == wire::icons.end())
        return "there is no icon \"" + text + '"';
    text = std::to_string(found - wire::icons.begin());
    return {};
}

int ask(const commonOptions &common, const boxArguments &given)
{
    progressClient::question box;
    box.title = given.title.value_or(translated("Question"));
    box.text = given.text;
    box.picture = given.picture;
    box.buttons.clear();
    for (const std::string &name : given.buttons)
        box.buttons.push_back(namedButton(name));
    if (!given.preset.empty())
        box.preset = namedButton(given.preset);
    progressClient client(common.identifier, common.limit());
    return report(client.ask(box, given.timeout()));
}

int reportAssertion(const commonOptions &common, const boxArguments &given)
{
    progressClient client(common.identifier, common.limit());
    return report(client.reportAssertion(given.text, given.timeout()));
}

void addTimeout(CLI::App *verb, boxArguments &given)
{
    verb->add_option("--timeout", given.timeoutSeconds,
                     "Seconds to wait for the answer; 0: as long as it takes")
        ->check(secondsWithin(0, 1e6));
}

void addAsk(commandLineSetup &setup)
{
    auto given = std::make_shared<boxArguments>();
    auto *verb = setup.app.add_subcommand("ask", "Asks the user and prints the name of the button pressed");
    verb->footer("\nButtons: " + allButtonNames() + ".");
    verb->add_option("TEXT", given->text, "The question")->required();
    verb->add_option("BUTTON", given->buttons, "Names of one to ten buttons (yes no)");
    verb->add_option("--title", given->title, "Title of the box")->default_str("Question");
    verb->add_option("--icon", given->picture, "none, information, warning, critical or question")
        ->transform(CLI::Validator(iconNumber, "", "icon"))
        ->default_str("question");
    verb->add_option("--default", given->preset, "The button that Return presses");
    addTimeout(verb, *given);
    verb->callback([&setup, given] { setup.chosen = [&setup, given] { return ask(setup.common, *given); }; });
}

void addAssert(commandLineSetup &setup)
{
    auto given = std::make_shared<boxArguments>();
    auto *verb = setup.app.add_subcommand(
        "assert", "Reports a failed assertion; prints yes, yes-to-all, retry, abort or none");
    verb->add_option("TEXT", given->text, "The report")->required();
    addTimeout(verb, *given);
    verb->callback([&setup, given] {
        setup.chosen = [&setup, given] { return reportAssertion(setup.common, *given); };
    });
}

} // namespace

void addBoxVerbs(commandLineSetup &setup)
{
    addAsk(setup);
    addAssert(setup);
}
