#include "progressctl/pipeWindow.h"

#include "language/language.h"
#include "progressctl/texts.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <utility>

namespace
{

using error = progressClient::error;
using event = progressClient::event;

std::string uniqueIdentifier()
{
    std::random_device random;
    return "pipe-" + std::to_string(random()) + '-' + std::to_string(random());
}

/// For as long as it lives, what is started here uses no display; a command that is started later does.
class withoutDisplay
{
public:
    withoutDisplay() { ::setenv(variable, "offscreen", 1); }
    ~withoutDisplay() { m_before.empty() ? ::unsetenv(variable) : ::setenv(variable, m_before.c_str(), 1); }
    withoutDisplay(const withoutDisplay &) = delete;
    withoutDisplay &operator=(const withoutDisplay &) = delete;

private:
    static constexpr char variable[] = "QT_QPA_PLATFORM";
    const std::string m_before = environment(variable);
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

pipeWindow::pipeWindow(const commonOptions &common, const pipeOptions &options, place where)
    : m_common(common), m_options(options)
{
    if (where == place::nowhere || !findPlace())
        startOwnDaemon(where);
    showContent();
    send();
}

/// On the daemon that runs; false when there is none, or none with room.
bool pipeWindow::findPlace()
{
    if (!progressClient::isRunning(m_common.identifier, m_common.limit()))
        return false;
    m_client.emplace(m_common.identifier, m_common.limit());
    return takeSlots();
}

std::size_t pipeWindow::slotsWanted() const
{
    return 1 + std::max(m_options.captions().size(), 1 + m_options.buttons.size());
}

/// A slot that was asked for is the first of all, unless there are too few behind it. False when no slot is
/// left.
bool pipeWindow::takeSlots()
{
    const int count = static_cast<int>(slotsWanted());
    const int first = std::min(m_options.slot, progressClient::slotCount - count);
    m_slots.clear();
    for (int i = 0; i < count; ++i) {
        const int slot = claimsSlots() ? m_client->claim() : first + i;
        if (slot < 0)
            return false;
        m_slots.push_back(slot);
    }
    return true;
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
    m_ownDaemon.emplace(started.process);
    m_client.emplace(identifier, m_common.limit());
    m_client->configure(settings);
    if (!takeSlots())
        throw error(error::reason::gone, "the daemon has no room");
}

settingEntries pipeWindow::ownSettings() const
{
    settingEntries settings = loadLook(m_options.look);
    const std::string &title = m_options.title.empty() ? translated("Progress") : m_options.title;
    settings.insert(settings.begin(), {"windowTitle", oneLine(title)});
    settings.emplace_back("windowModal", m_options.staysOnTop ? "on" : "off");
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
    return m_options.command.empty() ? std::string()
                                     : safeName(std::filesystem::path(m_options.command.front()).filename());
}

void pipeWindow::showContent()
{
    m_client->listen();
    pipeContent start;
    for (const std::string &caption : m_options.captions())
        start.bars.push_back({0, caption});
    m_shown.bars = placed(start).bars;
    for (std::size_t i = 0; i < m_shown.bars.size(); ++i)
        m_untold.createBar(slotOfBar(i), m_shown.bars[i].caption);
    // A window of its own has nothing to stand apart from.
    for (const int slot : m_ownDaemon ? std::vector<int>() : m_slots)
        m_untold.joinSlot(slot, leadingSlot());
    for (std::size_t i = 0; i < m_options.buttons.size(); ++i)
        m_untold.addButton(m_slots[i + 2], labelFromMnemonic(m_options.buttons[i].label));
    if (m_options.hasCancel)
        m_untold.addButton(leadingSlot(), labelFromMnemonic(m_options.cancelLabel));
    // Its user may have closed the window, which does not come back for further content.
    if (!m_ownDaemon)
        m_untold.activate();
}

void pipeWindow::offerOk()
{
    if (!m_options.hasOk || std::exchange(m_hasOk, true))
        return;
    m_untold.addButton(m_slots[0], labelFromMnemonic(m_options.okLabel));
    send();
}

/// The title stands in the title bar of a window of its own, if it has one, and above the text in one that is
/// shared.
pipeContent pipeWindow::placed(pipeContent content) const
{
    const bool isShared = !m_ownDaemon;
    if (!m_options.bars.empty() || !m_options.caption.empty() || (!isShared && m_options.staysOnTop))
        return content;
    if (isShared && !m_options.title.empty())
        content.text = content.bars[0].caption + (content.text.empty() ? "" : "\n" + content.text);
    content.bars[0].caption.clear();
    return content;
}

void pipeWindow::show(const pipeContent &content)
{
    const pipeContent wanted = placed(content);
    if (wanted.amount != m_shown.amount)
        m_untold.setAmount(wanted.amount);
    for (std::size_t i = 0; i < wanted.bars.size(); ++i) {
        const pipeBar &now = wanted.bars[i];
        const bool moves = i == 0 && wanted.pulsates;
        const bool moved = i == 0 && m_shown.pulsates;
        if (now.caption != m_shown.bars[i].caption)
            m_untold.updateText(slotOfBar(i), now.caption);
        if (moves && !moved)
            m_untold.pulse(slotOfBar(i));
        else if (!moves && (moved || now.percent != m_shown.bars[i].percent))
            m_untold.updateBar(slotOfBar(i), now.percent);
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
        // In a window of its own nothing is joined; joined alone, it would stand below the bar.
        if (!m_ownDaemon)
            m_untold.joinSlot(slot, leadingSlot());
    }
    m_hasText = !isUseless;
}

void pipeWindow::endRun(result how)
{
    if (how != result::learned)
        giveUp();
    for (const int slot : m_slots)
        m_untold.finishSlot(slot);
    send();
    m_runHasEnded = true;
}

std::optional<pipeEnd> pipeWindow::handleEvents()
{
    std::optional<pipeEnd> last;
    m_client->handleEvents([&](const event &each) {
        if (const auto end = endBy(each))
            last = end;
    });
    return last;
}

std::optional<pipeEnd> pipeWindow::endBy(const event &each)
{
    if (each.what == event::kind::shutDown)
        throw error(error::reason::gone, "the daemon ends");
    if (each.what == event::kind::closed)
        return pipeEnd::cancelled;
    if (each.what == event::kind::totalProgress)
        m_remaining = each.remainingSeconds;
    const auto found = std::find(m_slots.begin(), m_slots.end(), each.slot);
    if (each.what != event::kind::clicked || found == m_slots.end())
        return std::nullopt;
    const auto index = static_cast<std::size_t>(found - m_slots.begin());
    if (index < 2)
        return index == 0 ? pipeEnd::accepted : pipeEnd::cancelled;
    if (index - 2 >= m_options.buttons.size())
        return std::nullopt;
    m_pressed = index - 2;
    return pipeEnd::pressedOther;
}

void pipeWindow::close(result how)
{
    const bool isGivenUp = how != result::learned && !m_runHasEnded;
    if (how == result::cancelled && m_ownDaemon)
        m_client->configure({{"notifyEnd", "-1"}});
    if (isGivenUp)
        giveUp();
    if (!isGivenUp || !claimsSlots())
        takeAway();
    send();
    m_client->finish();
    if (m_ownDaemon)
        m_ownDaemon->waitForEnd(deadline(m_common.limit()));
}

/// A daemon forgets a run in which a client hangs up on bars in its claimed slots that are not full. In other
/// slots it is to look like one that was given up.
void pipeWindow::giveUp()
{
    int &percent = m_shown.bars[0].percent;
    percent = claimsSlots() ? std::min(percent, 99) : 0;
    m_untold.updateBar(slotOfBar(0), progressClient::givenUp);
    m_untold.updateBar(slotOfBar(0), percent);
}

void pipeWindow::takeAway()
{
    if (m_hasText)
        m_untold.removeText(m_slots[0]);
    for (const int slot : m_slots)
        m_untold.removeButton(slot);
    // The bars are the last, or their going would be learned as a fall to 0 percent.
    for (std::size_t i = m_shown.bars.size(); i-- > 0;)
        m_untold.removeBar(slotOfBar(i));
}
