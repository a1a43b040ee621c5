#include "server/windowOrder.h"

#include "platform/wayland.h"
#include "platform/x11Input.h"
#include "platform/x11Windows.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace
{

/// For so long a window manager may need to give the keyboard to whom it likes, once it has seen that a box
/// has gone; and to see that, when the machine is busy.
constexpr int returningMs = 600;
constexpr int returningStepMs = 20;
constexpr int seeingMs = 20'000;

/// Gives the window the keyboard. One that was hidden and is shown again before the display has taken the
/// keyboard away counts as inactive for the toolkit, which then hears of no change and would never mark the
/// focused button.
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

bool bypassesManager(const QWidget *window)
{
    return window->windowFlags().testFlag(Qt::X11BypassWindowManagerHint);
}

} // namespace

windowOrder::windowOrder()
{
    connect(&m_returning, &QTimer::timeout, this, &windowOrder::returnKeyboard);
}

void windowOrder::bringToFront(QWidget *dialog, bool takesKeyboard)
{
    const bool wasVisible = dialog->isVisible();
    dialog->setAttribute(Qt::WA_ShowWithoutActivating, boxIsOpen() || !takesKeyboard);
    dialog->show();
    if (boxIsOpen()) {
        for (QWidget *box : std::as_const(m_boxes)) {
            if (!wasVisible)
                keepInFront(box, dialog);
            box->raise();
        }
        keepBelowBoxes();
        return;
    }
    dialog->raise();
    if (takesKeyboard)
        takeKeyboard(dialog);
}

void windowOrder::openBox(QDialog *box, const QWidget *dialog)
{
    m_returning.stop();
    if (m_boxes.isEmpty())
        m_dialogHadKeyboard = dialog && (dialog->isActiveWindow() || dialog == m_heir);
    m_boxes.append(box);
    keepInFront(box, dialog);
    box->installEventFilter(this);
    // As a modal window of the application, which it is by itself, it would block the other boxes.
    box->open();
    m_boxWindows.insert(box, box->internalWinId());
    box->windowHandle()->installEventFilter(this);
    box->raise();
    box->activateWindow();
    keepBelowBoxes();
}

void windowOrder::closeBox(QWidget *box, QWidget *dialog)
{
    box->removeEventFilter(this);
    m_boxes.removeOne(box);
    m_lastBox = m_boxWindows.take(box);
    if (boxIsOpen()) {
        m_boxes.constLast()->raise();
        m_boxes.constLast()->activateWindow();
        keepBelowBoxes();
        return;
    }
    if (!dialog || !dialog->isVisible() || onWayland())
        return;
    if (bypassesManager(dialog))
        dialog->raise();
    if (!std::exchange(m_dialogHadKeyboard, false))
        return;
    m_heir = dialog;
    m_before = managedWindows();
    m_seeing.setRemainingTime(seeingMs);
    m_triesLeft = returningMs / returningStepMs;
    m_returning.start(returningStepMs);
    returnKeyboard();
}

void windowOrder::returnKeyboard()
{
    const std::vector<uint32_t> managed = managedWindows();
    if (std::find(managed.begin(), managed.end(), m_lastBox) != managed.end() && !m_seeing.hasExpired())
        m_triesLeft = returningMs / returningStepMs;
    // The manager gives it to windows that it had before; one that is new has taken it for a reason.
    if (!m_heir || !m_heir->isVisible() || m_triesLeft-- <= 0 || newcomerHasKeyboard(m_before)) {
        m_returning.stop();
        m_heir = nullptr;
    } else if (!m_heir->isActiveWindow()) {
        takeKeyboard(m_heir);
        if (bypassesManager(m_heir))
            takeIdleKeyboard(*m_heir);
    }
}

bool windowOrder::eventFilter(QObject *window, QEvent *event)
{
    if (event->type() == QEvent::WindowActivate) {
        auto *box = qobject_cast<QWidget *>(window);
        if (m_boxes.contains(box) && box != m_boxes.constLast()) {
            m_boxes.move(m_boxes.indexOf(box), m_boxes.size() - 1);
            box->raise();
            keepBelowBoxes();
        }
    } else if (event->type() == QEvent::WinIdChange) {
        // Before it is shown: a window manager gives it the keyboard at once.
        auto *box = qobject_cast<QWidget *>(window);
        tellHeldKeys(*box);
        keepEmptyTitle(*box);
    } else if (event->type() == QEvent::Expose && static_cast<QWindow *>(window)->isExposed()) {
        // Once only: raising exposes windows again.
        window->removeEventFilter(this);
        keepBelowBoxes();
    }
    return false;
}

/// A window that bypasses the window manager lies above all managed windows, so it has to give way by
/// itself; any other is simply behind the boxes.
void windowOrder::keepBelowBoxes() const
{
    if (m_boxes.isEmpty())
        return;
    for (const QWidget *window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && bypassesManager(window))
            putBelow(window, m_boxes.constFirst());
    }
}
