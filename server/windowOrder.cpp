#include "server/windowOrder.h"

#include "platform/windowSystem.h"
#include "platform/x11Input.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QWidget>
#include <QWindow>

#include <utility>

void windowOrder::bringToFront(QWidget *dialog, bool takesKeyboard)
{
    const bool wasVisible = dialog->isVisible();
    dialog->installEventFilter(this);
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
    if (m_boxes.isEmpty())
        m_keyboard.lend(dialog);
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
    const WId window = m_boxWindows.take(box);
    if (boxIsOpen()) {
        m_boxes.constLast()->raise();
        m_boxes.constLast()->activateWindow();
        keepBelowBoxes();
        return;
    }
    if (!dialog || !dialog->isVisible() || onWayland())
        return;
    if (bypassesManager(*dialog))
        dialog->raise();
    m_keyboard.giveBack(dialog, window);
}

bool windowOrder::eventFilter(QObject *window, QEvent *event)
{
    if (event->type() == QEvent::WindowActivate) {
        auto *active = qobject_cast<QWidget *>(window);
        if (boxIsOpen() && !m_boxes.contains(active)) {
            m_boxes.constLast()->activateWindow();
        } else if (boxIsOpen() && active != m_boxes.constLast()) {
            m_boxes.move(m_boxes.indexOf(active), m_boxes.size() - 1);
            active->raise();
            keepBelowBoxes();
        }
    } else if (event->type() == QEvent::WinIdChange) {
        // Before it is shown: a window manager gives it the keyboard at once.
        auto *shown = qobject_cast<QWidget *>(window);
        tellHeldKeys(*shown);
        keepEmptyTitle(*shown);
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
        if (window->isVisible() && bypassesManager(*window))
            putBelow(window, m_boxes.constFirst());
    }
}
