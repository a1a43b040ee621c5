#include "client/progressctl/exitStatus.h"
#include "client/progressctl/progressPipe.h"
#include "client/progressctl/theme.h"

#include <memory>

namespace
{

/// Options of other progress windows that have no meaning here, and whether they take a value.
struct ignoredOption {
    const char *name;
    bool hasValue;
};
constexpr ignoredOption ignoredOptions[] = {
    {"--pulsate", false}, {"--width", true}, {"--height", true}, {"--window-icon", true}, {"--attach", true}};

void addIgnoredOptions(CLI::App *verb)
{
    for (const ignoredOption &each : ignoredOptions) {
        const std::string name = each.name;
        const auto tell = [name] { complain(name + " is ignored: there is no such thing here"); };
        if (each.hasValue)
            verb->add_option_function<std::string>(name, [tell](const std::string &) { tell(); })->group("");
        else
            verb->add_flag_callback(name, tell)->group("");
    }
}

void addLook(CLI::App *verb, pipeOptions &given)
{
    verb->add_option("--title", given.title, "Title of the window and caption of the bar")
        ->capture_default_str();
    verb->add_option("--caption", given.caption, "Caption of the bar, when it is not the title");
    verb->add_option("--text", given.text, "Text below the bar, until a line starts with \"#\"");
    verb->add_option("--percentage", given.percentage, "Where the bar starts")->check(CLI::Range(0, 100));
    verb->add_option("--slot", given.slot, "Slot of the bar and the button; the text takes the next")
        ->check(CLI::Range(0, progressClient::slots - 1))
        ->capture_default_str();
    verb->add_option("--theme", given.theme, "Look of a daemon that is started: light, dark, none or a file")
        ->capture_default_str();
    verb->add_flag("--modal", given.isModal, "A daemon that is started keeps its window above all others");
    verb->add_flag("--time-remaining", given.showsRemaining, "Shows how long it will still take");
}

void addButtons(CLI::App *verb, pipeOptions &given)
{
    verb->add_flag("!--no-cancel", given.hasCancel, "Shows no Cancel button");
    verb->add_option("--cancel-label", given.cancelLabel, "What the Cancel button reads")
        ->capture_default_str();
    verb->add_option("--cancel-status", given.cancelStatus, "Exit status when it is pressed")
        ->check(CLI::Range(0, 255))
        ->capture_default_str();
    verb->add_flag("--auto-kill", given.autoKill, "Ends the writer when Cancel is pressed");
    verb->add_option("--ok-label", given.okLabel, "What the button of --wait reads")->capture_default_str();
}

void addEnd(CLI::App *verb, pipeOptions &given)
{
    verb->add_flag("--auto-close", given.autoClose,
                   "Closes the window at 100 already, not at the end of the input");
    verb->add_flag("--wait", given.waitForOk, "Keeps the window at the end, until its button is pressed");
    verb->add_flag("--expect-complete", given.expectsComplete,
                   "An input that ends below 100 is a failure (6)");
    verb->add_option("--timeout", given.timeoutSeconds, "Gives up after so many seconds (5)")
        ->check(CLI::Range(0.0, 1e6));
}

} // namespace

void addPipeVerb(commandLineSetup &setup)
{
    auto given = std::make_shared<pipeOptions>();
    given->theme = defaultTheme;
    auto *verb =
        setup.app.add_subcommand("pipe", "Shows what a writer tells: percents, and texts behind \"#\"");
    verb->footer("\nWith a COMMAND behind \"--\", runs it, reads its output and passes its exit status on; "
                 "else reads\n"
                 "standard input. Takes the options of \"zenity --progress\".");
    addLook(verb, *given);
    addButtons(verb, *given);
    addEnd(verb, *given);
    addIgnoredOptions(verb);
    verb->add_option("COMMAND", given->command, "The writer, behind \"--\"");
    verb->callback([&setup, given] {
        setup.chosen = [&setup, given] { return progressPipe(setup.common, *given).run(); };
    });
}
