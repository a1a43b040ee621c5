#include "widgets/roundedPanel.h"

#include <QBitmap>
#include <QImage>
#include <QPainter>
#include <QWidget>

#include <algorithm>

namespace
{

constexpr double panelRadius = 0.6; // em

} // namespace

int roundedRadius(double em)
{
    return qRound(panelRadius * em);
}

void paintRounded(QPainter &painter, const QWidget &window, double em, const QColor &outline,
                  const QBrush &ground)
{
    const double line = std::max(1.0, em / 12);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(outline, line));
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(window.rect()).adjusted(line / 2, line / 2, -line / 2, -line / 2),
                            roundedRadius(em), roundedRadius(em));
}

void cutCorners(QWidget &window, double em)
{
    const double radius = panelRadius * em - 0.5;
    QImage shape(window.size(), QImage::Format_ARGB32_Premultiplied);
    shape.fill(Qt::transparent);
    QPainter painter(&shape);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::black);
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(window.rect(), radius, radius);
    painter.end();
    window.setMask(QBitmap::fromImage(shape.createAlphaMask(Qt::ThresholdDither | Qt::AvoidDither)));
}
