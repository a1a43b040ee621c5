#pragma once

#include <QRegion>

/// The region of `g` with its corners rounded by circles of radius `r` pixels, `r` 1 or more. It is put
/// together as the dialog's look has always been: the toolkit's regions of polygons and ellipses leave out
/// their last column and row, so the shape is a pixel short at the right and at the bottom.
QRegion roundRectRegion(const QRect &g, int r);
