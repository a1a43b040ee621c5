#include "widgets/progressButton.h"

#include "widgets/appearance.h"
#include "widgets/theme.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace
{

/// Frame and body reach from the button's left and top edges to one pixel short of its right and bottom
/// ones, the body `bodyInset` further in.
constexpr int bodyInset = 4;
constexpr int cornerDiameter = 7;

/// What all buttons share, built for the size that was painted last.
struct paintCache {
    QSize size;
    QPainterPath roundRectBorder;
    QLinearGradient linearGrad;
    QPainterPath roundRectPath;
};

/// Outline of a button of this size, moved `inset` pixels inside. The straight edges start four
/// pixels from the corners although the arcs need only half of seven; the half pixel belongs to the look.
QPainterPath outline(const QSize &size, int inset)
{
    const qreal left = inset;
    const qreal top = inset;
    const qreal right = size.width() - 1 - inset;
    const qreal bottom = size.height() - 1 - inset;
    const qreal d = cornerDiameter;
    constexpr qreal run = 4;

    QPainterPath path;
    path.moveTo(right, top + run);
    path.arcTo(right - d, top, d, d, 0, 90);
    path.lineTo(left + run, top);
    path.arcTo(left, top, d, d, 90, 90);
    path.lineTo(left, bottom - run);
    path.arcTo(left, bottom - d, d, d, 180, 90);
    path.lineTo(right - run, bottom);
    path.arcTo(right - d, bottom - d, d, d, 270, 90);
    path.closeSubpath();
    return path;
}

QLinearGradient bodyGradient(int h)
{
    QLinearGradient gradient(4, 6, 4, h - 6);
    gradient.setColorAt(0.0, appearance.m_shadowLightColor);
    gradient.setColorAt(0.2, appearance.m_buttonBaseColor);
    gradient.setColorAt(0.8, appearance.m_buttonBaseColor);
    gradient.setColorAt(1.0, appearance.m_shadowDarkColor);
    return gradient;
}

paintCache cache;

const paintCache &cacheFor(const QSize &size)
{
    if (size != cache.size)
        cache = {size, outline(size, 0), bodyGradient(size.height()), outline(size, bodyInset)};
    return cache;
}

} // namespace

progressButton::progressButton(QWidget *parent) : QPushButton(parent)
{
    setFont(appearance.m_buttonFont);
    installEventFilter(parent);
    setFlat(true);
}

void progressButton::forgetColors()
{
    cache = {};
}

void progressButton::paintEvent(QPaintEvent *)
{
    const paintCache &look = cacheFor(size());
    const QColor frame = hasFocus() ? appearance.m_focusFrameColor : appearance.m_buttonBaseColor;

    QPainter painter(this);
    painter.setPen(frame);
    painter.setBrush(QBrush(frame));
    painter.drawPath(look.roundRectBorder);

    painter.setPen(Qt::black);
    painter.setBrush(look.linearGrad);
    painter.drawPath(look.roundRectPath);
    if (const QColor text = themedText(appearance.m_buttonTextColor, appearance.m_buttonBaseColor);
        text.isValid())
        painter.setPen(text);
    painter.drawText(rect().adjusted(4, 4, -5, -5), Qt::AlignCenter, text());
}
