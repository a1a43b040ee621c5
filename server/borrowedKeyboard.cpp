#include "server/borrowedKeyboard.h"

#include "platform/windowSystem.h"

#include <QApplication>
#include <QWidget>

#include <algorithm>

namespace
{

constexpr int stepMs = 20;
/// So often, once the manager has seen that a box has gone. A busy machine makes the steps longer, too.
constexpr int mostTries = 30;
/// For so long a manager may need to see that, when the machine is busy.
constexpr int seeingMs = 20'000;

} // namespace

borrowedKeyboard::borrowedKeyboard()
{
    m_asking.callOnTimeout([this] { ask(); });
}

void borrowedKeyboard::lend(const QWidget *dialog)
{
    const bool isOnItsWay = m_asking.isActive() && dialog == m_owner;
    m_isOwed = dialog && (dialog->isActiveWindow() || isOnItsWay);
    m_asking.stop();
}

void borrowedKeyboard::giveBack(QWidget *dialog, WId box)
{
    if (!m_isOwed)
        return;
    m_owner = dialog;
    m_box = box;
    m_known = managedWindows();
    m_seeing.setRemainingTime(seeingMs);
    m_triesLeft = mostTries;
    m_asking.start(stepMs);
    ask();
}

void borrowedKeyboard::ask()
{
    const std::vector<uint32_t> managed = managedWindows();
    if (std::find(managed.begin(), managed.end(), m_box) != managed.end() && !m_seeing.hasExpired())
        m_triesLeft = mostTries;
    // The manager gives it to windows that it had before; one that is new has taken it for a reason.
    if (!m_owner || !m_owner->isVisible() || m_triesLeft-- <= 0 || newcomerHasKeyboard(m_known)) {
        m_asking.stop();
    } else if (!m_owner->isActiveWindow()) {
        takeKeyboard(m_owner);
        if (bypassesManager(*m_owner))
            takeIdleKeyboard(*m_owner);
    }
}

/// One that was hidden and is shown again before the display has taken the keyboard away counts as inactive
/// for the toolkit, which then hears of no change and would never mark the focused button.
void takeKeyboard(QWidget *window)
{
    window->activateWindow();
    if (window->isActiveWindow() || window->windowHandle() != QGuiApplication::focusWindow())
        return;
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    QApplication::setActiveWindow(window);
    QT_WARNING_POP
}
