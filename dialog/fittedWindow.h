#pragma once

#include <QPoint>
#include <QSize>

class QRect;
class QWidget;

/// Size and place of a fitted dialog's window (not owned). It only grows while there is content, around its
/// centre, and moves as far as the screen's work area asks for. In the modal mode it is frameless, else the
/// window manager's own, which the user can make larger.
class fittedWindow
{
public:
    explicit fittedWindow(QWidget &window);

    /// Whether it is the window manager's own, as under Wayland it always is.
    bool isManaged() const;
    /// A managed window is placed by its manager.
    void movePosition();
    /// The user has moved it.
    void takeMoved();
    /// Whether it has another size than it was given here, the user's or the window manager's. That is the
    /// size so far then.
    bool takeResized();

    /// How large it can become.
    QSize room() const;
    /// Its size so far; empty before there was content.
    QSize grown() const { return m_grown; }
    /// It is as large as the content asks for; its user can make it smaller down to the least size.
    void take(const QSize &size, const QSize &least);
    /// The content has gone.
    void forget() { m_grown = {}; }
    /// It stands for that of `src`, which is shown.
    void goOnFrom(const fittedWindow &src);

private:
    void growTo(const QSize &size, const QRect &before);

    QWidget &m_window;
    QSize m_grown;
    QSize m_givenSize; ///< the last one that was given here, or heard of
    /// The centre of a frameless window, where it was put; the screen's work area may keep it elsewhere.
    /// (What the window itself tells is behind the times while a move is under way.)
    QPoint m_anchor;
    bool m_wasMoved = false; ///< by the user
};
