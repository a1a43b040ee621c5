#include "progressctl/pipeWindow.h"

#include "progressctl/exitStatus.h"
#include "progressctl/iconFile.h"
#include "progressctl/plainText.h"
#include "progressctl/safeName.h"

#include <algorithm>
#include <cstdio>
#include <sys/random.h>
#include <utility>

namespace
{

using error = progressClient::error;
using event = progressClient::event;

constexpr char defaultTitle[] = "Progress";

std::string uniqueIdentifier()
{
    unsigned long long number = 0;
    if (::getrandom(&number, sizeof number, 0) != sizeof number)
        throw failure(statusInternal, "no random number");
    char text[32];
    std::snprintf(text, sizeof text, "pipe-%016llx", number);
    return text;
}

} // namespace

pipeWindow::pipeWindow(const commonOptions &common, const pipeOptions &options)
    : m_common(common), m_options(options)
{
    if (progressClient::isRunning(common.identifier, common.limit()))
        m_client.emplace(common.identifier, common.limit());
    else
        startOwnDaemon();
    showContent();
    send();
}

void pipeWindow::startOwnDaemon()
{
    const settingEntries settings = ownSettings();
    progressClient::daemonOptions options;
    options.program = daemonProgram();
    options.timeout = m_common.startLimit();
    options.isPrivate = true;
    options.learnName = learnName();
    const std::string identifier = uniqueIdentifier();
    const auto started = progressClient::startDaemon(identifier, options);
    m_ownDaemon = std::make_unique<processHandle>(started.process);
    m_client.emplace(identifier, m_common.limit());
    m_client->configure(settings);
}

settingEntries pipeWindow::ownSettings() const
{
    settingEntries settings = loadLook(m_options.look);
    const std::string &title = m_options.title.empty() ? defaultTitle : m_options.title;
    settings.insert(settings.begin(), {"windowTitle", oneLine(title)});
    settings.emplace_back("windowModal", m_options.isModal ? "on" : "off");
    if (m_options.width > 0)
        settings.emplace_back("windowWidth", std::to_string(m_options.width));
    std::string icon = m_options.windowIcon;
    if (icon.empty() && !m_options.iconName.empty())
        icon = iconFile(m_options.iconName);
    if (!icon.empty())
        settings.emplace_back("windowIcon", icon);
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

void pipeWindow::showContent()
{
    if (!slotAt(0))
        throw failure(statusNoDaemon, "the daemon has no slot left for another bar");
    if (m_options.hasCancel || m_options.waitForOk || m_options.showsRemaining ||
        !m_options.extraLabels.empty())
        m_client->listen();
    m_untold.createBar(m_slots[0], caption());
    showButtons(m_options.hasCancel ? m_options.cancelLabel : std::string());
    // Its user may have closed the window, which does not come back for further content.
    if (!m_ownDaemon)
        m_untold.activate();
}

/// The further ones and one with this label, if it has one.
void pipeWindow::showButtons(const std::string &label)
{
    for (std::size_t i = 0; i < m_options.extraLabels.size(); ++i) {
        if (const auto slot = slotAt(i + 1))
            m_untold.addButton(*slot, labelFromMnemonic(m_options.extraLabels[i]));
    }
    if (!label.empty())
        m_untold.addButton(m_slots[0], labelFromMnemonic(label));
    m_hasButton = !label.empty();
}

std::string pipeWindow::caption() const
{
    if (!m_options.caption.empty())
        return m_options.caption;
    return m_options.title.empty() ? defaultTitle : oneLine(m_options.title);
}

void pipeWindow::send()
{
    m_client->send(m_untold);
}

/// With a slot that was asked for, the others are the next ones, and below it those that are left.
int pipeWindow::nextSlot()
{
    if (m_options.slot < 0)
        return m_client->claim();
    const int count = static_cast<int>(m_slots.size());
    if (count == progressClient::slotCount)
        return -1;
    const int above = m_options.slot + count;
    return above < progressClient::slotCount ? above : progressClient::slotCount - 1 - count;
}

std::optional<int> pipeWindow::slotAt(std::size_t index)
{
    while (m_slots.size() <= index) {
        const int slot = nextSlot();
        if (slot < 0 && index > 0 && !std::exchange(m_isFullTold, true))
            complain("the daemon has no slot left for the text, or for another button");
        if (slot < 0)
            return std::nullopt;
        m_slots.push_back(slot);
    }
    return m_slots[index];
}

void pipeWindow::show(const pipeContent &wanted)
{
    const bool moves = wanted.pulsates && wanted.percent < 100;
    if (moves && !m_shown.pulsates)
        m_untold.pulse(m_slots[0]);
    else if (!moves && (m_shown.pulsates || wanted.percent != m_shown.percent))
        m_untold.updateBar(m_slots[0], wanted.percent);
    if (wanted.text != m_shown.text)
        showText(wanted.text);
    m_shown = wanted;
    m_shown.pulsates = moves;
    send();
}

void pipeWindow::showText(const std::string &text)
{
    const auto slot = slotAt(1);
    if (!slot)
        return;
    // A line for nothing but the remaining time goes with it.
    const bool isUseless = m_hasText && text.empty() && m_options.showsRemaining;
    if (isUseless)
        m_untold.removeText(*slot);
    else if (m_hasText)
        m_untold.updateText(*slot, text);
    else
        m_untold.createText(*slot, text);
    m_hasText = !isUseless;
}

/// A run ends with the last of the content. So what stays is put up anew, as another run that is not learned:
/// an own daemon is told so; another one, which may have other clients' runs to learn, gets a text in the
/// bar's place.
void pipeWindow::offerOk(bool isWorthLearning)
{
    takeAway(isWorthLearning);
    if (m_ownDaemon) {
        // With so few moments as this run has, an exact estimate shows nothing.
        m_untold.configure({{"estimate", "exact"}});
        m_untold.createBar(m_slots[0], caption());
        m_untold.updateBar(m_slots[0], m_shown.percent);
    } else {
        m_untold.createText(m_slots[0], caption() + ' ' + std::to_string(m_shown.percent) + '%');
    }
    if (!m_shown.text.empty())
        showText(m_shown.text);
    showButtons(m_options.okLabel);
    if (m_ownDaemon)
        m_untold.messageStop();
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
        return deed::closed;
    if (each.what == event::kind::totalProgress)
        m_remaining = each.remainingSeconds;
    const auto found = std::find(m_slots.begin(), m_slots.end(), each.slot);
    const auto index = static_cast<std::size_t>(found - m_slots.begin());
    if (each.what != event::kind::clicked || found == m_slots.end() || index > m_options.extraLabels.size())
        return deed::nothing;
    if (index == 0)
        return deed::pressedButton;
    m_pressedLabel = m_options.extraLabels[index - 1];
    return deed::pressedExtra;
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

void pipeWindow::takeAway(bool isWorthLearning)
{
    if (m_ownDaemon && !isWorthLearning)
        m_untold.messageStart();
    if (m_hasText)
        m_untold.removeText(m_slots[1]);
    if (m_hasButton)
        m_untold.removeButton(m_slots[0]);
    for (std::size_t i = 1; i <= m_options.extraLabels.size() && i < m_slots.size(); ++i)
        m_untold.removeButton(m_slots[i]);
    // The last, or its going would be learned as a fall to 0 percent.
    m_untold.removeBar(m_slots[0]);
    m_hasText = false;
}
