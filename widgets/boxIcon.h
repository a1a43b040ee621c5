#pragma once

#include <QPixmap>

/// The picture of a box, one of QMessageBox::Icon by its number, in a square of `side` pixels: the icon of
/// the desktop's theme, else one of our own. Null for none, as for any other number.
QPixmap boxIcon(int which, int side);
