#include "platform/wayland.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

bool onWayland()
{
    static const bool isWayland = QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
    return isWayland;
}

/// The compositor hears of the parent when a window is mapped.
void keepInFront(QWidget *child, const QWidget *parent)
{
    if (!onWayland())
        return;
    const bool wasVisible = child->isVisible();
    child->hide();
    child->winId();
    child->windowHandle()->setTransientParent(parent && parent->isVisible() ? parent->windowHandle()
                                                                            : nullptr);
    child->setVisible(wasVisible);
}
