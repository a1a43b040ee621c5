#include "dialog/CProgressDialog.h"

#include "dialog/dialogHost.h"
#include "dialog/dialogLayout.h"
#include "widgets/progressButton.h"

#include <QKeyEvent>
#include <QMouseEvent>

void CProgressDialog::buttonClicked()
{
    if (sender() == m_hideButton)
        setVisible(false);
    sendClicked(sender());
}

bool CProgressDialog::sendClicked(const QObject *button)
{
    for (int k = 0; k < maxButtons; ++k) {
        if (buttonVisible[k] && buttons[k] == button) {
            m_host.clicked(k);
            return true;
        }
    }
    return false;
}

bool CProgressDialog::eventFilter(QObject *obj, QEvent *ev)
{
    const QEvent::Type type = ev->type();
    const bool isKey = type == QEvent::KeyPress || type == QEvent::KeyRelease;
    // The second press of a double click presses a button as the first does.
    const bool isMousePress = type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick;
    if (m_host.isInputBlocked() && (isKey || isMousePress || type == QEvent::Shortcut))
        return true;

    if (obj == this) {
        drag(ev);
        forgetInput(type);
        if (type == QEvent::LayoutRequest)
            m_layout->placeAgain();
    }
    if (isKey)
        return handleKey(obj, static_cast<QKeyEvent *>(ev));
    if (type == QEvent::Show && obj == this)
        buttons[0]->setFocus();
    return false;
}

/// What is released elsewhere is never heard of: keys that were down when the keyboard went to another
/// window, and whatever was down when the dialog was hidden.
void CProgressDialog::forgetInput(QEvent::Type type)
{
    if (type == QEvent::WindowDeactivate || type == QEvent::Hide)
        m_heldKeys.clear();
    if (type == QEvent::Hide)
        m_buttonPressed = false;
}

void CProgressDialog::drag(QEvent *ev)
{
    switch (ev->type()) {
    case QEvent::MouseButtonPress:
        m_buttonPressed = true;
        m_lastPoint = static_cast<QMouseEvent *>(ev)->globalPosition().toPoint() - pos();
        break;
    case QEvent::MouseMove:
        // Positions in the dialog would be those from before moves that are still under way.
        if (m_buttonPressed) {
            move(static_cast<QMouseEvent *>(ev)->globalPosition().toPoint() - m_lastPoint);
            m_layout->takeMoved();
        }
        break;
    case QEvent::MouseButtonRelease:
        m_buttonPressed = false;
        break;
    default:
        break;
    }
}

namespace
{

/// Keys that act when they are let go, and not while they are held.
bool actsOnce(int key)
{
    return key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape;
}

} // namespace

bool CProgressDialog::handleKey(QObject *obj, const QKeyEvent *ev)
{
    int index = -1;
    QPushButton *pressedButton = concernedButton(obj, index);
    if (!pressedButton && !(ev->key() == Qt::Key_Escape && m_layout->closesByEscape()))
        return false;
    const bool isPress = ev->type() == QEvent::KeyPress;
    const std::optional<keyStroke> stroke = isPress ? m_heldKeys.pressed(*ev) : m_heldKeys.released(*ev);
    if (!stroke)
        return isPress;
    const bool isIdle = stroke->isRepetition && actsOnce(stroke->key);
    return isIdle || keyReleased(stroke->key, pressedButton, index) || isPress;
}

/// The button that a key on `obj` is meant for, and its slot (0 for the Hide button); null for none.
QPushButton *CProgressDialog::concernedButton(QObject *obj, int &index) const
{
    if (obj == m_hideButton || m_hideButton->hasFocus()) {
        index = 0;
        return m_hideButton;
    }
    for (int k = 0; k < maxButtons; ++k) {
        if (obj == buttons[k] || (obj == this && buttons[k]->hasFocus())) {
            index = k;
            return buttons[k];
        }
    }
    return nullptr;
}

bool CProgressDialog::keyReleased(int key, QPushButton *pressedButton, int index)
{
    if (key == Qt::Key_Escape && m_layout->closesByEscape())
        return closeByUser();
    if (!pressedButton)
        return false;
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Right:
    case Qt::Key_Down:
        focusNext(pressedButton == m_hideButton ? -1 : index + 1);
        return true;
    case Qt::Key_Backtab:
    case Qt::Key_Left:
    case Qt::Key_Up:
        focusPrevious(pressedButton, index);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return activateButton(pressedButton);
    case Qt::Key_Home:
    case Qt::Key_PageUp:
        if (QPushButton *first = firstShownButton())
            first->setFocus();
        return true;
    case Qt::Key_End:
    case Qt::Key_PageDown:
        if (QPushButton *last = lastShownButton())
            last->setFocus();
        return true;
    default:
        return false;
    }
}

void CProgressDialog::focusNext(int nextButton)
{
    if (nextButton >= 0 && nextButton < maxButtons && buttons[nextButton]->isVisible())
        buttons[nextButton]->setFocus();
    else
        m_hideButton->setFocus();
}

void CProgressDialog::focusPrevious(QPushButton *pressedButton, int index)
{
    if (index > 0) {
        if (buttons[index - 1]->isVisible())
            buttons[index - 1]->setFocus();
    } else if (pressedButton == m_hideButton) {
        if (QPushButton *last = lastShownButton())
            last->setFocus();
    }
}

bool CProgressDialog::activateButton(QPushButton *pressedButton)
{
    if (pressedButton == m_hideButton) {
        // Where there is no busy window to bring the dialog back, nothing hides it.
        if (!m_hideButton->isVisible())
            return false;
        setVisible(false);
        return true;
    }
    if (!sendClicked(pressedButton))
        return false;
    willCancel();
    return true;
}

bool CProgressDialog::closeByUser()
{
    setVisible(false);
    m_host.closed();
    return true;
}

QPushButton *CProgressDialog::firstShownButton() const
{
    for (int k = 0; k < maxButtons; ++k) {
        if (buttons[k]->isVisible())
            return buttons[k];
    }
    return nullptr;
}

QPushButton *CProgressDialog::lastShownButton() const
{
    for (int k = maxButtons - 1; k >= 0; --k) {
        if (buttons[k]->isVisible())
            return buttons[k];
    }
    return nullptr;
}
