#pragma once

#include <QDeadlineTimer>
#include <QPointer>
#include <QTimer>
#include <qwindowdefs.h>

#include <cstdint>
#include <vector>

class QWidget;

/// The keyboard, which boxes borrow from the dialog. A window manager sees that the last box has gone later
/// than we do, and then gives the keyboard to whom it likes: it is asked for until it stays with the dialog,
/// unless a window has it that was not there before. Windows are not owned.
class borrowedKeyboard
{
public:
    borrowedKeyboard();

    /// The first box is about to open. `dialog`, the active one or null, is owed the keyboard if it has it,
    /// or is about to get it back.
    void lend(const QWidget *dialog);
    /// The last box, which had the window `box`, is hidden. `dialog`, the active one, is visible, and gets
    /// what it is owed.
    void giveBack(QWidget *dialog, WId box);

private:
    void ask();

    bool m_isOwed = false;
    QTimer m_asking;
    // While that is active:
    QPointer<QWidget> m_owner;
    WId m_box = 0;
    /// What the manager had when the box closed.
    std::vector<uint32_t> m_known;
    QDeadlineTimer m_seeing;
    int m_triesLeft = 0;
};

/// Gives a visible window the keyboard, as far as the window manager agrees.
void takeKeyboard(QWidget *window);
