#pragma once

class QBrush;
class QColor;
class QPainter;
class QWidget;

/// The ground of a frameless window with rounded corners. Lengths are made of `em`, in pixels.

/// Within the corners' radius from its edges there is more than the plain brush.
int roundedRadius(double em);
void paintRounded(QPainter &painter, const QWidget &window, double em, const QColor &outline,
                  const QBrush &ground);

/// Without a compositing manager, what is not painted is black. Takes away of the window what the outline
/// covers least, and leaves the rest of its edge for a compositing manager to blend.
void cutCorners(QWidget &window, double em);
