#include "widgets/motifStyle.h"

#include <QPainter>
#include <QStyleOptionProgressBar>
#include <qdrawutil.h>

#include <algorithm>

namespace
{

constexpr int panelWidth = 2;

/// The filled part of `bar.rect`, whole pixels only. Vertical bars grow from the bottom whichever way
/// their text reads; a bar without a range, or smaller than its panel, has no filled part.
QRect filledPart(const QStyleOptionProgressBar &bar)
{
    const bool vertical = !(bar.state & QStyle::State_Horizontal);
    const qint64 length = vertical ? bar.rect.height() : bar.rect.width();
    const qint64 done = qint64(bar.progress) - bar.minimum;
    const qint64 range = qint64(bar.maximum) - bar.minimum;
    if (done <= 0 || range <= 0 || bar.rect.isEmpty())
        return {};

    const int filled = int(length * std::min(done, range) / range);
    const bool fromFarEnd =
        (vertical || bar.direction == Qt::RightToLeft) != static_cast<bool>(bar.invertedAppearance);
    QRect part = bar.rect;
    if (vertical)
        part.setHeight(filled);
    else
        part.setWidth(filled);
    if (fromFarEnd)
        part.moveBottomRight(bar.rect.bottomRight());
    return part;
}

} // namespace

void motifStyle::drawControl(ControlElement element, const QStyleOption *opt, QPainter *p,
                             const QWidget *widget) const
{
    const auto *bar = qstyleoption_cast<const QStyleOptionProgressBar *>(opt);
    if (element == CE_ProgressBarGroove && bar)
        qDrawShadePanel(p, bar->rect, bar->palette, true, panelWidth);
    else if (element == CE_ProgressBarContents && bar)
        p->fillRect(filledPart(*bar), bar->palette.brush(QPalette::Highlight));
    else
        QCommonStyle::drawControl(element, opt, p, widget);
}

QRect motifStyle::subElementRect(SubElement element, const QStyleOption *opt, const QWidget *widget) const
{
    switch (element) {
    case SE_ProgressBarGroove:
    case SE_ProgressBarLabel:
        return opt->rect;
    case SE_ProgressBarContents:
        return opt->rect.adjusted(panelWidth, panelWidth, -panelWidth, -panelWidth);
    default:
        return QCommonStyle::subElementRect(element, opt, widget);
    }
}

int motifStyle::pixelMetric(PixelMetric metric, const QStyleOption *opt, const QWidget *widget) const
{
    return metric == PM_ProgressBarChunkWidth ? 1 : QCommonStyle::pixelMetric(metric, opt, widget);
}
