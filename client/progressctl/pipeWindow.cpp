#include "client/progressctl/pipeWindow.h"

#include "client/progressctl/exitStatus.h"
#include "client/progressctl/iconFile.h"
#include "client/progressctl/plainText.h"
#include "client/progressctl/safeName.h"

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

/// A setting ends with ";", and its look-alike does not.
std::string titleSetting(std::string title)
{
    constexpr char greekQuestionMark[] = "\xCD\xBE";
    for (std::size_t at = 0; (at = title.find(';', at)) != std::string::npos;)
        title.replace(at, 1, greekQuestionMark);
    return title;
}

/// Without what a message cannot hold.
std::string carriable(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());
    for (std::size_t at = 0; (at = text.find("</progress>", at)) != std::string::npos;)
        text[at] = '(';
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
}

void pipeWindow::startOwnDaemon()
{
    const settingEntries settings = ownSettings();
    progressClient::daemonOptions options;
    options.program = daemonProgram();
    options.timeout = std::max(m_common.limit(), options.timeout);
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
    settings.insert(settings.begin(), {"windowTitle", titleSetting(title)});
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
    const std::string &title = m_options.title.empty() ? defaultTitle : m_options.title;
    m_client->createBar(m_slots[0], m_options.caption.empty() ? title : m_options.caption);
    for (std::size_t i = 0; i < m_options.extraLabels.size(); ++i) {
        if (const auto slot = slotAt(i + 1))
            m_client->addButton(*slot, m_options.extraLabels[i]);
    }
    if (m_options.hasCancel)
        m_client->addButton(m_slots[0], m_options.cancelLabel);
    m_hasButton = m_options.hasCancel;
}

/// With a slot that was asked for, the others are the next ones, and below it those that are left.
int pipeWindow::nextSlot()
{
    if (m_options.slot < 0)
        return m_client->claim();
    const int count = static_cast<int>(m_slots.size());
    if (count == progressClient::slots)
        return -1;
    const int above = m_options.slot + count;
    return above < progressClient::slots ? above : progressClient::slots - 1 - count;
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
        m_client->pulse(m_slots[0]);
    else if (!moves && (m_shown.pulsates || wanted.percent != m_shown.percent))
        m_client->updateBar(m_slots[0], wanted.percent);
    if (wanted.text != m_shown.text)
        showText(carriable(wanted.text));
    m_shown = wanted;
    m_shown.pulsates = moves;
}

void pipeWindow::showText(const std::string &text)
{
    const auto slot = slotAt(1);
    if (slot && m_hasText)
        m_client->updateText(*slot, text);
    else if (slot)
        m_client->createText(*slot, text);
    m_hasText = m_hasText || slot;
}

void pipeWindow::offerOk()
{
    m_client->addButton(m_slots[0], m_options.okLabel);
    m_hasButton = true;
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
    if (m_ownDaemon && !isWorthLearning)
        m_client->messageStart();
    m_client->removeBar(m_slots[0]);
    if (m_hasText)
        m_client->removeText(m_slots[1]);
    if (m_hasButton)
        m_client->removeButton(m_slots[0]);
    for (std::size_t i = 1; i <= m_options.extraLabels.size() && i < m_slots.size(); ++i)
        m_client->removeButton(m_slots[i]);
    if (m_ownDaemon)
        m_client->exitDaemon();
    m_client->finish();
    if (m_ownDaemon)
        m_ownDaemon->waitForEnd(deadline(m_common.limit()));
}
