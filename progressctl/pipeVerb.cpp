#include "progressctl/exitStatus.h"
#include "progressctl/progressPipe.h"
#include "progressctl/verbs.h"

#include <algorithm>
#include <memory>

namespace
{

/// Options of other progress windows, and of their toolkit, that have no meaning here.
void addIgnoredOptions(CLI::App *verb)
{
    const auto telling = [](const std::string &name) {
        return [name](const auto &) { complain(name + " is ignored: there is no such thing here"); };
    };
    for (const char *name :
         {"--height", "--attach", "--class", "--name", "--display", "--screen", "--gtk-module", "--gtk-debug",
          "--gtk-no-debug", "--gdk-debug", "--gdk-no-debug"})
        verb->add_option_function<std::string>(name, telling(name))->group("");
    verb->add_flag_function("--g-fatal-warnings", telling("--g-fatal-warnings"))->group("");
}

void addLook(CLI::App *verb, pipeOptions &given)
{
    verb->add_option("--title", given.title, "Title of the window and caption of the bar");
    verb->add_option("--caption", given.caption, "Caption of the bar, when it is not the title");
    verb->add_option("--text", given.text, "Text below the bar, until a line starts with \"#\"");
    verb->add_flag("!--no-markup", given.hasMarkup, "Shows markup in texts as it stands");
    verb->add_option("--percentage", given.percentage, "Where the bar starts");
    verb->add_flag("--pulsate", given.pulsates, "Moves the bar to and fro, until 100");
    verb->add_option("--slot", given.slot, "Slot of the bar and the button, instead of any that is free")
        ->check(CLI::Range(0, progressClient::slotCount - 1));
    addLookOptions(*verb, given.look);
    verb->add_option("--width", given.width, "Least width of a window of its own, in pixels")
        ->check(CLI::Range(0, 8192));
    verb->add_option("--window-icon", given.windowIcon, "Picture file for the icon of a window of its own");
    verb->add_option("--icon-name", given.iconName, "Name of the icon, when it is no file");
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
    verb->add_option("--extra-button", given.extraLabels, "A further button; prints its label, exit status 1")
        ->allow_extra_args(false);
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
        ->check(secondsWithin(0, 1e6));
    verb->add_option(
        "--learn", given.learnName,
        "Name under which the time is learned, instead of the title or the command's; empty: not");
}

/// A word that is no option's is most likely a part of a text that was not quoted; only what stands behind
/// "--" is run.
void tellIgnored(const std::vector<std::string> &ignored)
{
    std::string all;
    for (const std::string &each : ignored)
        all += each.empty() ? "" : ' ' + each;
    if (!all.empty())
        complain("ignored:" + all + " (a command stands behind \"--\")");
}

/// As other progress windows take it: the nearest percent, and no button without a label.
void putRight(pipeOptions &given)
{
    given.percentage = std::clamp(given.percentage, 0, 100);
    if (given.cancelLabel.empty())
        given.cancelLabel = pipeOptions().cancelLabel;
    if (given.okLabel.empty())
        given.okLabel = pipeOptions().okLabel;
    auto &extra = given.extraLabels;
    extra.erase(std::remove(extra.begin(), extra.end(), std::string()), extra.end());
}

} // namespace

void addPipeVerb(commandLineSetup &setup)
{
    auto given = std::make_shared<pipeOptions>();
    auto *verb =
        setup.app.add_subcommand("pipe", "Shows what a writer tells: percents, and texts behind \"#\"");
    verb->footer("\nWith a COMMAND behind \"--\", runs it, reads its output and passes its exit status on; "
                 "else reads\n"
                 "standard input. Takes the options of \"zenity --progress\".");
    addLook(verb, *given);
    addButtons(verb, *given);
    addEnd(verb, *given);
    addIgnoredOptions(verb);
    const auto others = std::make_shared<std::vector<std::string>>();
    verb->add_option("WORD", *others)->group("");
    verb->callback([&setup, given, others] {
        setup.chosen = [&setup, given, others] {
            tellIgnored(*others);
            putRight(*given);
            given->command = setup.command;
            return progressPipe(setup.common, *given).run();
        };
    });
}
