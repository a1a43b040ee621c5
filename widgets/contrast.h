#pragma once

#include <QColor>

/// How well text in one colour reads on the other: 1 (not at all) to 21 (black and white), by the formula of
/// the web's accessibility guidelines, where 4.5 is enough for text and 3 for shapes.
double contrast(const QColor &one, const QColor &other);

/// Black or white, whichever reads better on `background`.
QColor readableOn(const QColor &background);

/// `one` with a share, 0 to 1, of `other`.
QColor mixed(const QColor &one, const QColor &other, double share);
