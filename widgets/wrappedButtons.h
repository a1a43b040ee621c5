#pragma once

class QDialogButtonBox;

/// Breaks the one line of buttons, in the order that they have in it, into lines of at most `width` pixels,
/// each at the right. It does so once: a box of several lines stays as it is. The toolkit makes one line
/// again when a button is added or the style changes.
void wrapButtons(QDialogButtonBox &box, int width);
