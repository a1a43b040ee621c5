#include "dialog/fittedWindow.h"

#include "platform/windowSystem.h"
#include "widgets/appearance.h"
#include "widgets/texts.h"

#include <QScreen>
#include <QWindow>

#include <algorithm>

namespace
{

constexpr Qt::WindowFlags managedFlags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                         Qt::WindowSystemMenuHint | Qt::WindowMinMaxButtonsHint |
                                         Qt::WindowCloseButtonHint;

/// What a window manager puts above and below its windows, in em.
constexpr double frameHeight = 3;

QRect centredAt(const QPoint &centre, const QSize &size)
{
    QRect rect(QPoint(), size);
    rect.moveCenter(centre);
    return rect;
}

/// Where the work area has room for it, unless it is out of that altogether.
QRect pushedInto(const QRect &room, QRect place)
{
    if (!room.intersects(place))
        return place;
    place.moveRight(std::min(place.right(), room.right()));
    place.moveBottom(std::min(place.bottom(), room.bottom()));
    place.moveTopLeft({std::max(place.x(), room.x()), std::max(place.y(), room.y())});
    return place;
}

} // namespace

fittedWindow::fittedWindow(QWidget &window) : m_window(window)
{
    if (appearance.m_modal_dialog && !onWayland())
        m_window.setAttribute(Qt::WA_TranslucentBackground);
    else
        m_window.setWindowFlags(managedFlags);
}

bool fittedWindow::isManaged() const
{
    return !bypassesManager(m_window);
}

void fittedWindow::movePosition()
{
    if (isManaged())
        return;
    QRect screen = m_window.screen()->availableGeometry();
    if (appearance.m_desktopIsKnown)
        screen = {0, 0, appearance.m_desktopWidth, appearance.m_desktopHeight};
    screen.translate(appearance.m_paintOffsetX, appearance.m_paintOffsetY);
    m_anchor = screen.center();
    m_window.move(centredAt(m_anchor, m_window.size()).topLeft());
}

void fittedWindow::takeMoved()
{
    m_anchor = m_window.geometry().center();
    m_wasMoved = true;
}

bool fittedWindow::takeResized()
{
    if (!isManaged() || m_window.size() == m_givenSize)
        return false;
    m_grown = m_givenSize = m_window.size();
    return true;
}

QSize fittedWindow::room() const
{
    QSize room = m_window.screen()->availableGeometry().size();
    if (isManaged())
        room.rheight() -= emLength(appearance.m_labelFont, m_window)(frameHeight);
    return room;
}

void fittedWindow::take(const QSize &size, const QSize &least)
{
    const QRect before = m_window.geometry();
    const bool isFresh = m_grown.isEmpty() && !m_window.isVisible() && !m_wasMoved;
    m_grown = m_givenSize = size;
    if (!isManaged())
        m_window.setFixedSize(size);
    else
        m_window.setMinimumSize(m_window.minimumSize().boundedTo(least));
    if (isFresh) {
        m_window.resize(size);
        movePosition();
    } else if (size != before.size())
        growTo(size, before);
    if (isManaged())
        m_window.setMinimumSize(least);
}

/// One that a manager has not placed yet has no centre.
void fittedWindow::growTo(const QSize &size, const QRect &before)
{
    QRect room = m_window.screen()->availableGeometry();
    if (!isManaged())
        return m_window.setGeometry(pushedInto(room, centredAt(m_anchor, size)));
    if (!m_window.isVisible() || !m_window.windowHandle()->isExposed())
        return m_window.resize(size);
    const QRect frame = m_window.frameGeometry();
    room.adjust(before.left() - frame.left(), before.top() - frame.top(), before.right() - frame.right(),
                before.bottom() - frame.bottom());
    m_window.setGeometry(pushedInto(room, centredAt(before.center(), size)));
}

void fittedWindow::goOnFrom(const fittedWindow &src)
{
    m_grown = src.m_grown;
    m_window.move(src.m_window.pos());
    m_window.setWindowState(src.m_window.windowState() & Qt::WindowMaximized);
    m_anchor = src.m_anchor;
    m_wasMoved = src.m_wasMoved;
}
