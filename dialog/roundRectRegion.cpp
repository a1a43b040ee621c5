#include "dialog/roundRectRegion.h"

#include <QPolygon>

QRegion roundRectRegion(const QRect &g, int r)
{
    const int x = g.left();
    const int y = g.top();
    const int right = g.right();
    const int bottom = g.bottom();
    const int cut = r - 1;

    // The rectangle without a square of side `cut` in each corner.
    QPolygon a;
    a << QPoint(x + cut, y) << QPoint(right - cut, y) << QPoint(right - cut, y + cut)
      << QPoint(right, y + cut) << QPoint(right, bottom - cut) << QPoint(right - cut, bottom - cut)
      << QPoint(right - cut, bottom) << QPoint(x + cut, bottom) << QPoint(x + cut, bottom - cut)
      << QPoint(x, bottom - cut) << QPoint(x, y + cut) << QPoint(x + cut, y + cut);
    QRegion reg(a, Qt::OddEvenFill);

    const int r2 = 2 * r;
    reg += QRegion(x, y, r2, r2, QRegion::Ellipse);
    reg += QRegion(right - r2, y, r2, r2, QRegion::Ellipse);
    reg += QRegion(x, bottom - r2, r2, r2, QRegion::Ellipse);
    reg += QRegion(right - r2, bottom - r2, r2, r2, QRegion::Ellipse);
    return reg;
}
