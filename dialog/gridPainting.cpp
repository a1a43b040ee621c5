#include "dialog/gridLayout.h"

#include "widgets/appearance.h"
#include "widgets/imageFile.h"
#include "widgets/progressStyle.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPolygon>
#include <QWidget>

namespace
{

/// What the window's outline looks like for one size. Dialogs have mostly the same size, so one shape is
/// kept for all of them, built for the size that was painted last.
struct windowShape {
    QSize size;
    int framewidth = 0;
    QRegion outer;
    QRegion frameregion;
};

const windowShape &shapeOf(const QSize &size, int framewidth)
{
    static windowShape shape;
    if (size == shape.size && framewidth == shape.framewidth)
        return shape;

    constexpr int outerRadius = 4;
    constexpr int innerRadius = 1;
    const QRect whole(QPoint(0, 0), size);
    const int offs = framewidth;
    const QRegion outer = roundRectRegion(whole, outerRadius);
    const QRegion innerNoFocus = roundRectRegion(whole.adjusted(offs, offs, -offs, -offs), innerRadius);
    shape = {size, framewidth, outer, outer - innerNoFocus};
    return shape;
}

/// From top to bottom: a shadow, the even colour `col`, a shadow.
QLinearGradient backgroundGradient(int height, const QColor &col)
{
    QLinearGradient grad1(0, 0, 0, height);
    grad1.setColorAt(0.0, appearance.m_shadowLightColor);
    grad1.setColorAt(0.05, col);
    grad1.setColorAt(0.95, col);
    grad1.setColorAt(1.0, appearance.m_shadowDarkColor);
    return grad1;
}

QPixmap stretched(const QPixmap &image, const QSize &size)
{
    if (image.size() == size)
        return image;
    const double wRatio = double(size.width()) / image.width();
    const double hRatio = double(size.height()) / image.height();
    return image.transformed(QTransform::fromScale(wRatio, hRatio), Qt::FastTransformation);
}

} // namespace

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

/// Paints the whole window. What is left out stays transparent: the corners, except under an image.
void gridLayout::paint(const QPaintEvent &)
{
    const QRect all = m_window.rect();
    const windowShape &shape = shapeOf(all.size(), m_framewidth);
    QPainter painter(&m_window);
    if (m_bgpixmap && !m_bgpixmap->isNull()) {
        // Holds for the frame as well.
        painter.setOpacity(m_alphaValue / 255.0);
        painter.drawPixmap(0, 0, *m_bgpixmap);
    } else {
        QColor col = m_backgroundColor;
        col.setAlpha(m_alphaValue);
        painter.setClipRegion(shape.outer, Qt::ReplaceClip);
        painter.fillRect(all, backgroundGradient(all.height(), col));
    }
    painter.setClipRegion(shape.frameregion, Qt::ReplaceClip);
    painter.fillRect(all, QBrush(m_frameColor));
}

/// The brush of the palette, here and below, is what child windows would show; there are none, and nothing
/// else reads it.
void gridLayout::loadBackground()
{
    static imageCache cache;
    const QPixmap progressPixmap =
        cache.image(appearance.m_windowPixmap, QSize(m_Width, m_Height), stretched);
    if (!progressPixmap.isNull()) {
        setBackgroundPixmap(progressPixmap);
        return;
    }
    QPalette gray;
    gray.setBrush(m_window.backgroundRole(), QBrush(Qt::gray));
    m_window.setPalette(gray);
}

/// Makes `newpixmap` the background, stretched to the dialog's size; a null image leaves the painted
/// background as it is.
void gridLayout::setBackgroundPixmap(const QPixmap &newpixmap)
{
    QPalette palette;
    if (newpixmap.isNull()) {
        palette.setBrush(m_window.backgroundRole(), QBrush(Qt::lightGray));
    } else {
        scalePixmap(newpixmap);
        palette.setBrush(m_window.backgroundRole(), QBrush(*m_bgpixmap));
    }
    m_window.setPalette(palette);
}

void gridLayout::scalePixmap(const QPixmap &newpixmap)
{
    m_bgpixmap = std::make_unique<QPixmap>(stretched(newpixmap, QSize(m_Width, m_Height)));
}

void gridLayout::reloadPixmap()
{
    if (m_bgpixmap && !m_bgpixmap->isNull())
        setBackgroundPixmap(QPixmap(*m_bgpixmap));
}

void gridLayout::dropImages()
{
    m_bgpixmap.reset();
    m_window.setPalette({});
}
