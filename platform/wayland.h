#pragma once

class QWidget;

/// Whether windows are shown by a Wayland compositor. It alone says where they are, which lies above which,
/// and who gets the keyboard; a client can only ask for the keyboard, and name a window's parent.
bool onWayland();

/// Has the compositor keep `child`, which may be shown already, in front of `parent`, where there is one.
/// Elsewhere than on Wayland nothing happens.
void keepInFront(QWidget *child, const QWidget *parent);
