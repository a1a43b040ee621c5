#include "progressctl/buttonNames.h"
#include "progressctl/exitStatus.h"
#include "progressctl/settings.h"
#include "progressctl/verbs.h"

#include <cstdio>
#include <memory>

namespace
{

using words = std::vector<std::string>;

/// A line that stands for the names of files.
constexpr char files[] = "FILES";

words slots()
{
    return {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"};
}

/// What may stand behind an option, or as one of a verb's other words, where that is known.
words valuesOf(const std::string &name)
{
    if (name == "--layout")
        return {"fitted", "grid"};
    if (name == "--theme")
        return {"auto", "light", "dark", "none", files};
    if (name == "--icon")
        return {"none", "information", "warning", "critical", "question"};
    if (name == "--file" || name == "--plot" || name == "--window-icon")
        return {files};
    if (name == "--default" || name == "BUTTON")
        return buttonNames();
    if (name == "--slot" || name == "SLOT")
        return slots();
    if (name == "STATE")
        return {"on", "off"};
    words keys;
    for (const std::string &each : name == "ENTRY" ? settingKeys() : words())
        keys.push_back(each + '=');
    return keys;
}

std::vector<const CLI::App *> verbsOf(const CLI::App &app)
{
    return app.get_subcommands([](const CLI::App *each) { return !each->get_group().empty(); });
}

/// Null for a verb that there is not.
const CLI::App *verbNamed(const CLI::App &app, const std::string &name)
{
    for (const CLI::App *each : verbsOf(app)) {
        if (each->get_name() == name)
            return each;
    }
    return nullptr;
}

/// Names of the options, with their descriptions; of one with several names the longest.
void addOptions(const CLI::App &app, words &found)
{
    for (const CLI::Option *each : app.get_options()) {
        if (each->get_positional() || each->get_group().empty())
            continue;
        std::string name = each->get_lnames().front();
        found.push_back("--" + name + '\t' + each->get_description());
    }
}

const CLI::Option *positionalAt(const CLI::App &verb, std::size_t index)
{
    const CLI::Option *last = nullptr;
    for (const CLI::Option *each : verb.get_options()) {
        if (!each->get_positional())
            continue;
        last = each;
        if (index-- == 0)
            return each;
    }
    return last && last->get_items_expected_max() > 1 ? last : nullptr;
}

/// Follows the words in front of the one that is completed.
class completion
{
public:
    explicit completion(const CLI::App &app) : m_app(app), m_verb(&app) {}

    void pass(const std::string &word)
    {
        if (!m_pending.empty())
            m_pending.clear();
        else if (!word.empty() && word.front() == '-')
            passOption(word);
        else if (m_verb == &m_app)
            m_verb = verbNamed(m_app, word);
        else
            ++m_positionals;
    }

    words candidates() const
    {
        if (!m_pending.empty())
            return valuesOf(m_pending);
        words found;
        if (m_verb == &m_app) {
            for (const CLI::App *each : verbsOf(m_app))
                found.push_back(each->get_name() + '\t' + each->get_description());
        } else if (m_verb) {
            if (const CLI::Option *next = positionalAt(*m_verb, m_positionals))
                found = valuesOf(next->get_name(true));
            addOptions(*m_verb, found);
        }
        addOptions(m_app, found);
        return found;
    }

private:
    void passOption(const std::string &word)
    {
        const CLI::Option *known = m_verb ? m_verb->get_option_no_throw(word) : nullptr;
        if (!known)
            known = m_app.get_option_no_throw(word);
        if (known && known->get_items_expected_max() > 0)
            m_pending = word;
    }

    const CLI::App &m_app;
    const CLI::App *m_verb; ///< the program itself before there is one; null for one that is unknown
    std::string m_pending;  ///< an option whose value comes next
    std::size_t m_positionals = 0;
};

} // namespace

void addCompleteVerb(commandLineSetup &setup)
{
    auto before = std::make_shared<words>();
    auto *verb = setup.app.add_subcommand("complete", "Prints what may stand behind these words, for shells");
    verb->group("");
    verb->add_option("WORD", *before);
    verb->callback([&setup, before] {
        setup.chosen = [&setup, before] {
            completion state(setup.app);
            for (const std::string &each : *before)
                state.pass(each);
            for (const std::string &each : state.candidates())
                std::printf("%s\n", each.c_str());
            return statusOk;
        };
    });
}
