#include "language/language.h"
#include "progressctl/commandLine.h"
#include "progressctl/progressPipe.h"
#include "wire/recordLine.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace
{

/// What other progress windows and their toolkits know and what has no meaning here is passed over: the user
/// of a script cannot do anything about it.
constexpr char ignoredFlags[] =
    "--progress --multi-progress --modal --no-wrap --ellipsize --default-cancel --center --enable-log "
    "--log-expanded --log-on-top --hide-text --rtl --vertical --mouse --sticky --fixed --skip-taskbar "
    "--no-escape --always-print-result --splash --no-focus --selectable-labels --keep-icon-size "
    "--image-on-top --clear --no-shadow --stdout --colors --no-collapse --cr-wrap --g-fatal-warnings";
/// Likewise, with a value.
constexpr char ignoredOptions[] =
    "--height --attach --class --name --screen --gtk-module --gtk-debug --gtk-no-debug --gdk-debug "
    "--gdk-no-debug --borders --geometry --posx --posy --log-height --response --align --text-align "
    "--buttons-layout --timeout-indicator --watch-bar --backtitle";

void addIgnored(CLI::App *verb)
{
    for (const std::string &name : CLI::detail::split(ignoredFlags, ' '))
        verb->add_flag(name)->group("");
    for (const std::string &name : CLI::detail::split(ignoredOptions, ' '))
        verb->add_option(name)->group("");
}

void addLook(CLI::App *verb, pipeOptions &given)
{
    verb->add_option("--title", given.title,
                     "Title of the window (Progress); above the text in one that is shared");
    verb->add_option("--caption", given.caption, "Caption of the bar (none)");
    verb->add_option("--text,--progress-text", given.text,
                     "Text above the bar, until a line starts with \"#\"");
    verb->add_flag_callback(
        "--no-markup", [&given] { given.hasMarkup = false; }, "Shows markup in texts as it stands");
    verb->add_option("--percentage", given.percentage, "Where the bar starts, 0 to 100")
        ->capture_default_str();
    verb->add_flag("--pulsate", given.pulsates, "Moves the bar to and fro, until 100");
    verb->add_option("--bar", given.bars,
                     "A bar with this LABEL; several have lines \"N:PERCENT\", \"N:#TEXT\"")
        ->allow_extra_args(false);
    verb->add_option("--slot", given.slot,
                     "First slot, 0 to 9, in a window that is shared (any that are free)")
        ->check(CLI::Range(0, progressClient::slotCount - 1));
    addLookOptions(*verb, given.look);
    verb->add_option("--width", given.width,
                     "Least width of a window of its own, in pixels (as its content asks for)");
    verb->add_option("--window-icon", given.icon,
                     "Icon of a window of its own: a picture file, or the name of an icon");
    verb->add_option("--icon-name,--icon,--image", given.image,
                     "Picture in a window of its own: a file, or the name of an icon");
    verb->add_flag("--on-top,--undecorated", given.staysOnTop,
                   "A window of its own stays above all others, without a frame");
    verb->add_option_function<std::string>(
        "--display", [](const std::string &name) { ::setenv("DISPLAY", name.c_str(), 1); },
        "The X display of a window of its own");
    verb->add_flag_callback(
        "--terminal", [&given] { given.usesTerminal = true; },
        "A line on standard error in the place of a window, as where there is no display");
    verb->add_flag_callback(
        "--no-terminal", [&given] { given.usesTerminal = false; }, "No line where there is no display");
    verb->add_flag("--time-remaining", given.showsRemaining, "Shows how long it will still take");
}

/// "LABEL!ICON!TIP:STATUS", or the name of a button that the toolkit has.
void addButton(pipeOptions &given, const std::string &text)
{
    const std::size_t colon = text.rfind(':');
    pipeButton made{text.substr(0, std::min(text.find('!'), colon)), 0};
    if (colon != std::string::npos)
        made.status = std::atoi(text.c_str() + colon + 1) & 0xFF;
    else
        made.status = static_cast<int>(given.buttons.size());
    for (const char *prefix : {"gtk-", "yad-"}) {
        if (made.label.starts_with(prefix) && made.label.size() > 4) {
            made.label.erase(0, 4);
            made.label[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(made.label[0])));
            made.label = translated(made.label.c_str());
        }
    }
    if (made.label == "Ok")
        made.label = translated("OK");
    given.buttons.push_back(made);
    given.hasCancel = given.hasOk = false;
}

void addButtons(CLI::App *verb, pipeOptions &given)
{
    verb->add_flag_callback(
        "--no-cancel", [&given] { given.hasCancel = false; }, "Shows no Cancel button");
    verb->add_option("--cancel-label", given.cancelLabel, "What the Cancel button reads")
        ->default_str("Cancel");
    verb->add_option("--ok-label", given.okLabel, "What the button that ends it reads")->default_str("OK");
    verb->add_option("--cancel-status", given.cancelStatus, "Exit status when Cancel is pressed")
        ->check(CLI::Range(0, 255))
        ->capture_default_str();
    verb->add_flag("--auto-kill", given.autoKill,
                   "When Cancel is pressed, ends the calling script (SIGHUP), or the COMMAND (SIGTERM)");
    verb->add_option("--extra-button", "A further button; prints its label, exit status 1")
        ->type_name("LABEL")
        ->each([&given](const std::string &label) { given.buttons.push_back({label}); });
    verb->add_option("--button", "A button in the place of OK and Cancel")
        ->type_name("LABEL:STATUS")
        ->each([&given](const std::string &text) { addButton(given, text); });
    verb->add_flag_callback(
        "--no-buttons", [&given] { given.hasCancel = given.hasOk = false; }, "Shows neither OK nor Cancel");
}

void addEnd(CLI::App *verb, pipeOptions &given)
{
    verb->add_flag("--auto-close", given.autoClose,
                   "Closes the window at 100, or when the input ends; else it stays until OK is pressed");
    verb->add_flag("--keep-open", given.keepsOpen, "Keeps the window of a COMMAND, too, until OK is pressed");
    verb->add_flag("--notify", given.notifies,
                   "Tells the desktop of the end of a run of 10 seconds or more that was out of sight");
    verb->add_flag("--expect-complete", given.expectsComplete,
                   "An input that ends below 100 is a failure: exit status 6");
    verb->add_option("--timeout", given.timeoutSeconds,
                     "Longest time that the window is open, in seconds (no limit); then the exit status is 5")
        ->check(secondsWithin(-1e6, 1e6));
    verb->add_option_function<std::vector<std::string>>(
            "--gauge",
            [&given](const std::vector<std::string> &words) {
                given.isGauge = true;
                given.text = words.front();
                if (words.size() > 3)
                    given.percentage = std::atoi(words[3].c_str());
            },
            "TEXT HEIGHT WIDTH [PERCENT], as in dialog and whiptail: lines between two \"XXX\" are a percent "
            "and a text; closes at the end of the input")
        ->expected(1, 4);
    verb->add_option(
        "--learn", given.learnName,
        "Name under which the time is learned, instead of the title or the command's; empty: not");
    verb->add_option("--amount", given.amount,
                     "How much there is to do (else the m of the first \"n/m\" or \"n of m\" that is read)")
        ->check(
            valueThat([](const std::string &text) { return wire::readAmount(text) > 0; }, "is no amount"));
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

/// As other progress windows take it: the nearest percent and size, and no button without a label.
void putRight(pipeOptions &given)
{
    given.percentage = std::clamp(given.percentage, 0, 100);
    given.width = std::clamp(given.width, 0, 32767);
    if (given.cancelLabel.empty())
        given.cancelLabel = translated("Cancel");
    if (given.okLabel.empty())
        given.okLabel = translated("OK");
    auto &buttons = given.buttons;
    std::erase_if(buttons, [](const pipeButton &each) { return each.label.empty(); });
    // One slot is that of the text and OK, and the first of the others that of Cancel.
    constexpr std::size_t mostBars = progressClient::slotCount - 1;
    if (given.bars.size() > mostBars || buttons.size() > mostBars - 1)
        complain("there is no room for more than 9 bars and 8 further buttons");
    given.bars.resize(std::min(given.bars.size(), mostBars));
    buttons.resize(std::min(buttons.size(), mostBars - 1));
    // "LABEL:TYPE": what kind of bar it is looks the same here.
    for (std::string &each : given.bars)
        each.erase(std::min(each.rfind(':'), each.size()));
}

} // namespace

void addPipeVerb(commandLineSetup &setup)
{
    auto given = std::make_shared<pipeOptions>();
    auto *verb =
        setup.app.add_subcommand("pipe", "Shows what a writer tells: percents, and texts behind \"#\"");
    addLook(verb, *given);
    addButtons(verb, *given);
    addEnd(verb, *given);
    addIgnored(verb);
    verb->footer("\nWith a COMMAND behind \"--\", runs it, reads its output and passes its exit status on; "
                 "else reads\nstandard input, and when it has ended the window stays until OK is pressed. "
                 "Takes the options of\n\"zenity --progress\". These have no meaning here and are passed "
                 "over:\n" +
                 std::string(ignoredFlags) + ' ' + ignoredOptions + ".\n" + setup.app.get_footer());
    const auto others = std::make_shared<std::vector<std::string>>();
    verb->add_option("WORD", *others)->group("");
    verb->callback([&setup, given, others] {
        std::vector<std::string> ignored = setup.app.remaining();
        ignored.insert(ignored.end(), others->begin(), others->end());
        tellIgnored(ignored);
        putRight(*given);
        given->command = setup.command;
        setup.status = progressPipe(setup.common, *given).run();
    });
}
