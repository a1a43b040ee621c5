#include "progressctl/pipeWindow.h"

#include "language/language.h"
#include "progressctl/texts.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sys/random.h>
#include <utility>

namespace
{

using error = progressClient::error;
using event = progressClient::event;

std::string uniqueIdentifier()
{
    unsigned long long number = 0;
    if (::getrandom(&number, sizeof number, 0) != sizeof number)
        throw failure(statusInternal, "no random number");
    char text[32];
    std::snprintf(text, sizeof text, "pipe-%016llx", number);
    return text;
}

/// For as long as it lives, what is started here uses no display; a command that is started later does.
class withoutDisplay
{
public:
    withoutDisplay()
    {
        if (const char *value = std::getenv(variable))
            m_before = value;
        ::setenv(variable, "offscreen", 1);
    }
    ~withoutDisplay()
    {
        if (m_before)
            ::setenv(variable, m_before->c_str(), 1);
        else
            ::unsetenv(variable);
    }
    withoutDisplay(const withoutDisplay &) = delete;
    withoutDisplay &operator=(const withoutDisplay &) = delete;

private:
    static constexpr char variable[] = "QT_QPA_PLATFORM";
    std::optional<std::string> m_before;
};

} // namespace

std::vector<std::string> pipeOptions::captions() const
{
    if (!bars.empty())
        return bars;
    if (!caption.empty())
        return {caption};
    return {title.empty() ? translated("Progress") : oneLine(title)};
}

pipeWindow::pipeWindow(const commonOptions &common, const pipeOptions &options, const pipeContent &start,
                       place where)
    : m_common(common), m_options(options)
{
    if (where == place::nowhere || !findPlace()) {
        startOwnDaemon(where);
        takeSlots();
    }
    if (m_slots.size() < slotsWanted())
        complain("the daemon has no slot left for another bar or button");
    showContent(placed(start));
    send();
}

/// On the daemon that runs; false when there is none, or none with room.
bool pipeWindow::findPlace()
{
    if (!progressClient::isRunning(m_common.identifier, m_common.limit()))
        return false;
    m_client.emplace(m_common.identifier, m_common.limit());
    takeSlots();
    return m_options.slot >= 0 || m_slots.size() == slotsWanted();
}

std::size_t pipeWindow::slotsWanted() const
{
    return 1 + std::max(m_options.captions().size(), 1 + m_options.buttons.size());
}

/// A slot that was asked for is the first of all, unless there are too few behind it.
void pipeWindow::takeSlots()
{
    constexpr int all = progressClient::slotCount;
    const int count = std::min(static_cast<int>(slotsWanted()), all);
    m_slots.clear();
    for (int i = 0; i < count; ++i) {
        const int slot = m_options.slot < 0 ? m_client->claim() : std::min(m_options.slot, all - count) + i;
        if (slot < 0)
            return;
        m_slots.push_back(slot);
    }
}

void pipeWindow::startOwnDaemon(place where)
{
    const settingEntries settings = ownSettings();
    progressClient::daemonOptions options;
    options.timeout = m_common.startLimit();
    options.isPrivate = true;
    options.learnName = learnName();
    const std::string identifier = uniqueIdentifier();
    m_client.reset();
    std::optional<withoutDisplay> hidden;
    if (where == place::nowhere)
        hidden.emplace();
    const auto started = progressClient::startDaemon(identifier, options);
    hidden.reset();
    m_ownDaemon = std::make_unique<processHandle>(started.process);
    m_client.emplace(identifier, m_common.limit());
    m_client->configure(settings);
}

settingEntries pipeWindow::ownSettings() const
{
    settingEntries settings = loadLook(m_options.look);
    const std::string &title = m_options.title.empty() ? translated("Progress") : m_options.title;
    settings.insert(settings.begin(), {"windowTitle", oneLine(title)});
    settings.emplace_back("windowModal", m_options.isModal ? "on" : "off");
    if (m_options.width > 0)
        settings.emplace_back("windowWidth", std::to_string(m_options.width));
    if (!m_options.icon.empty())
        settings.emplace_back("windowIcon", m_options.icon);
    if (!m_options.image.empty())
        settings.emplace_back("windowImage", m_options.image);
    if (m_options.hasMarkup)
        settings.emplace_back("windowMarkup", "on");
    if (m_options.notifies)
        settings.emplace_back("notifyEnd", "10");
    return settings;
}

/// What is learned belongs to the job: a pipe that nothing names learns nothing.
std::string pipeWindow::learnName() const
{
    if (m_options.learnName)
        return safeName(*m_options.learnName);
    if (!m_options.title.empty())
        return safeName(m_options.title);
    return m_options.command.empty() ? std::string() : safeName(baseName(m_options.command.front()));
}

void pipeWindow::showContent(const pipeContent &start)
{
    m_client->listen();
    if (m_options.amount > 0)
        tellAmount(m_options.amount);
    for (std::size_t i = 0; i < start.bars.size(); ++i) {
        if (const auto slot = slotOfBar(i))
            m_untold.createBar(*slot, start.bars[i].caption);
        m_shown.bars.push_back({0, start.bars[i].caption});
    }
    // A window of its own has nothing to stand apart from.
    if (!m_ownDaemon)
        joinSlots();
    const auto showButton = [this](std::size_t index, const std::string &label) {
        if (const auto slot = slotAt(index))
            m_untold.addButton(*slot, labelFromMnemonic(label));
    };
    for (std::size_t i = 0; i < m_options.buttons.size(); ++i)
        showButton(i + 2, m_options.buttons[i].label);
    if (m_options.hasCancel)
        showButton(1, m_options.cancelLabel);
    // Its user may have closed the window, which does not come back for further content.
    if (!m_ownDaemon)
        m_untold.activate();
}

/// That of the first bar and Cancel leads.
void pipeWindow::joinSlots()
{
    for (const int slot : m_slots)
        m_untold.joinSlot(slot, m_slots[1]);
}

void pipeWindow::offerOk()
{
    if (!m_options.hasOk || std::exchange(m_hasOk, true))
        return;
    m_untold.addButton(m_slots[0], labelFromMnemonic(m_options.okLabel));
    send();
}

void pipeWindow::send()
{
    m_client->send(m_untold);
}

std::optional<int> pipeWindow::slotAt(std::size_t index) const
{
    return index < m_slots.size() ? std::optional(m_slots[index]) : std::nullopt;
}

/// The title stands in the title bar of a window of its own, if it has one, and above the text in one that is
/// shared.
pipeContent pipeWindow::placed(pipeContent content) const
{
    const bool isShared = !m_ownDaemon;
    if (!m_options.bars.empty() || !m_options.caption.empty() || (!isShared && m_options.isModal))
        return content;
    if (isShared && !m_options.title.empty())
        content.text = content.bars[0].caption + (content.text.empty() ? "" : "\n" + content.text);
    content.bars[0].caption.clear();
    return content;
}

void pipeWindow::show(const pipeContent &content)
{
    const pipeContent wanted = placed(content);
    for (std::size_t i = 0; i < wanted.bars.size(); ++i) {
        const auto slot = slotOfBar(i);
        const pipeBar &now = wanted.bars[i];
        const bool moves = i == 0 && wanted.pulsates;
        const bool moved = i == 0 && m_shown.pulsates;
        if (!slot)
            continue;
        if (now.caption != m_shown.bars[i].caption)
            m_untold.updateText(*slot, now.caption);
        if (moves && !moved)
            m_untold.pulse(*slot);
        else if (!moves && (moved || now.percent != m_shown.bars[i].percent))
            m_untold.updateBar(*slot, now.percent);
    }
    if (wanted.text != m_shown.text)
        showText(wanted.text);
    m_shown = wanted;
    send();
}

void pipeWindow::showText(const std::string &text)
{
    const int slot = m_slots[0];
    // A line for nothing but the remaining time goes with it.
    const bool isUseless = m_hasText && text.empty() && m_options.showsRemaining;
    if (isUseless)
        m_untold.removeText(slot);
    else if (m_hasText)
        m_untold.updateText(slot, text);
    else {
        m_untold.createText(slot, text);
        m_untold.joinSlot(slot, m_slots[1]);
    }
    m_hasText = !isUseless;
}

void pipeWindow::endRun()
{
    for (const int slot : m_slots)
        m_untold.finishSlot(slot);
    send();
}

pipeWindow::deed pipeWindow::handleEvents()
{
    deed last = deed::nothing;
    m_client->handleEvents([&](const event &each) {
        if (const deed found = deedOf(each); found != deed::nothing)
            last = found;
    });
    return last;
}

pipeWindow::deed pipeWindow::deedOf(const event &each)
{
    if (each.what == event::kind::shutDown)
        throw error(error::reason::gone, "the daemon ends");
    if (each.what == event::kind::closed)
        return deed::cancelled;
    if (each.what == event::kind::totalProgress)
        m_remaining = each.remainingSeconds;
    const auto found = std::find(m_slots.begin(), m_slots.end(), each.slot);
    if (each.what != event::kind::clicked || found == m_slots.end())
        return deed::nothing;
    const auto index = static_cast<std::size_t>(found - m_slots.begin());
    if (index < 2)
        return index == 0 ? deed::accepted : deed::cancelled;
    if (index - 2 >= m_options.buttons.size())
        return deed::nothing;
    m_pressed = index - 2;
    return deed::pressedOther;
}

void pipeWindow::close(bool isWorthLearning)
{
    takeAway(isWorthLearning);
    send();
    if (m_ownDaemon)
        m_client->exitDaemon();
    m_client->finish();
    if (m_ownDaemon)
        m_ownDaemon->waitForEnd(deadline(m_common.limit()));
}

/// A daemon forgets a run in which a client has hung up on unfinished bars in its claimed slots. Full ones
/// are finished no more.
void pipeWindow::takeAway(bool isWorthLearning)
{
    if (!m_ownDaemon && !isWorthLearning && m_options.slot < 0) {
        for (std::size_t i = 0; i < m_shown.bars.size(); ++i) {
            if (const auto slot = slotOfBar(i))
                m_untold.updateBar(*slot, 0);
        }
        return;
    }
    if (m_ownDaemon && !isWorthLearning)
        m_untold.messageStart();
    if (m_hasText)
        m_untold.removeText(m_slots[0]);
    for (const int slot : m_slots)
        m_untold.removeButton(slot);
    // The bars are the last, or their going would be learned as a fall to 0 percent.
    for (std::size_t i = m_shown.bars.size(); i-- > 0;) {
        if (const auto slot = slotOfBar(i))
            m_untold.removeBar(*slot);
    }
}
