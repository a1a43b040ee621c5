#include "progressctl/buttonNames.h"
#include "progressctl/exitStatus.h"
#include "progressctl/verbs.h"

#include <cstdio>
#include <memory>

namespace
{

using button = progressClient::button;
using icon = progressClient::icon;

struct boxArguments {
    std::string title = "Question";
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

button namedButton(const std::string &name)
{
    const auto found = buttonFromName(name);
    if (!found)
        throw failure(statusUsage, "there is no button \"" + name + "\"; there are " + allButtonNames());
    return *found;
}

int report(button pressed)
{
    std::printf("%s\n", std::string(nameOf(pressed)).c_str());
    return isAccepting(pressed) ? statusOk : statusRejected;
}

int ask(const commonOptions &common, const boxArguments &given)
{
    progressClient::question box;
    box.title = given.title;
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
    // In the order of their numbers.
    const std::vector<std::string> icons{"none", "information", "warning", "critical", "question"};
    auto given = std::make_shared<boxArguments>();
    auto *verb = setup.app.add_subcommand("ask", "Asks the user and prints the name of the button pressed");
    verb->footer("\nButtons: " + allButtonNames() + ".");
    verb->add_option("TEXT", given->text, "The question")->required();
    verb->add_option("BUTTON", given->buttons, "Names of one to ten buttons (yes no)");
    verb->add_option("--title", given->title, "Title of the box")->capture_default_str();
    verb->add_option("--icon", given->picture, "none, information, warning, critical or question")
        ->transform(oneOf(icons, true))
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
