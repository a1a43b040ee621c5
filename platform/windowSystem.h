#pragma once

#include <cstdint>
#include <vector>

class QWidget;

/// What the toolkit leaves to each window system. Where nothing else is said, it is something that X11 can
/// do, and nothing happens on other platforms.

/// Whether windows are shown by a Wayland compositor. It alone says where they are, which lies above which,
/// and who gets the keyboard; a client can only ask for the keyboard, and name a window's parent.
bool onWayland();

/// Has the Wayland compositor keep `child`, which may be shown already, in front of `parent`, where there is
/// one.
void keepInFront(QWidget *child, const QWidget *parent);

/// To be called when a window was created: the toolkit gives one without a title the program's name.
/// Elsewhere the title is a blank.
void keepEmptyTitle(QWidget &window);

/// Whether the window manager has nothing to do with the window.
bool bypassesManager(const QWidget &window);

/// Puts a window that bypasses the window manager directly below a visible one, which the manager may have
/// put into a frame of its own. The toolkit can only raise a window above everything, or lower it under the
/// windows of all other programs.
void putBelow(const QWidget *window, const QWidget *other);

/// Whether no other program's window lies above this one, panels aside. A window that bypasses the window
/// manager lies above all, as every window does where there is no manager.
bool liesInFront(const QWidget &window);

/// Tells taskbars how far the window's program is, 0 to 100; below 0 for nothing under way.
void setTaskbarProgress(const QWidget &window, int percent);

/// The windows of all programs that the window manager has.
std::vector<uint32_t> managedWindows();

/// Whether the keyboard is on a window on the screen, or within one, that is neither this program's nor
/// among `known`.
bool newcomerHasKeyboard(const std::vector<uint32_t> &known);

/// Gives a visible window the keyboard that no window on the screen has: a manager keeps it somewhere else
/// then. The toolkit asks with the time of the user's last act, which is not late enough for that.
void takeIdleKeyboard(const QWidget &window);
