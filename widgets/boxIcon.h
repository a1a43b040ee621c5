#pragma once

#include <QMessageBox>

/// The picture of a box in a square of `side` pixels: the icon of the desktop's theme, else one of our own.
/// Null for none.
QPixmap boxIcon(QMessageBox::Icon which, int side);
