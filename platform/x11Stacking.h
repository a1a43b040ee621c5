#pragma once

class QWidget;

/// Puts a window that bypasses the window manager directly below a visible one, which the manager may have
/// put into a frame of its own. The toolkit can only raise a window above everything, or lower it under the
/// windows of all other programs. Nothing happens on other platforms than X11.
void putBelow(const QWidget *window, const QWidget *other);
