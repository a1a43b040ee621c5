#include "widgets/progressStyle.h"

#include <QPainter>
#include <QStyleOptionProgressBar>
#include <qdrawutil.h>

#include <algorithm>
#include <limits>

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

/// The frame of reference in which the label reads from left to right.
struct labelFrame {
    QRect rect;
    QTransform transform;
    Qt::LayoutDirection fillDirection;
};

labelFrame frameOf(const QStyleOptionProgressBar &bar)
{
    labelFrame frame{bar.rect, {}, bar.direction};
    if (!(bar.state & QStyle::State_Horizontal)) {
        frame.rect.setSize(bar.rect.size().transposed());
        if (bar.bottomToTop)
            frame.transform.translate(0, frame.rect.width()).rotate(-90);
        else
            frame.transform.translate(frame.rect.height(), 0).rotate(90);
        frame.fillDirection = bar.bottomToTop ? Qt::LeftToRight : Qt::RightToLeft;
    }
    if (bar.invertedAppearance)
        frame.fillDirection = frame.fillDirection == Qt::LeftToRight ? Qt::RightToLeft : Qt::LeftToRight;
    return frame;
}

/// How many of `length` pixels have the colour of the filled part, rounded to the nearest; -1 when the bar
/// has no range. Large values are scaled down by the length first, which loses their last digits: where the
/// colour edge of a bar with a huge range falls depends on it.
int highlightedLength(const QStyleOptionProgressBar &bar, int length)
{
    qint64 done = qint64(bar.progress) - bar.minimum;
    qint64 range = std::max<qint64>(0, qint64(bar.maximum) - bar.minimum);
    if (length > 0 && bar.progress >= std::numeric_limits<int>::max() / length && range >= length) {
        done /= length;
        range /= length;
    }
    if (range == 0)
        return -1;
    return int(std::max<qint64>(0, (length * done + range / 2) / range));
}

void drawLabel(const QStyleOptionProgressBar &bar, QPainter *p)
{
    const labelFrame frame = frameOf(bar);
    const QRect &rect = frame.rect;
    const int highlighted = highlightedLength(bar, rect.width());
    if (!bar.textVisible || highlighted < 0)
        return;
    const QRect left(rect.x(), rect.y(), highlighted, rect.height());
    const QRect right(rect.x() + highlighted, rect.y(), rect.width() - highlighted, rect.height());
    const auto drawClipped = [&](const QRect &part, QPalette::ColorRole role) {
        p->setClipRect(QStyle::visualRect(frame.fillDirection, rect, part), Qt::ReplaceClip);
        p->setPen(bar.palette.brush(QPalette::Current, role).color());
        p->drawText(rect, Qt::AlignCenter | Qt::TextSingleLine, bar.text);
    };
    p->save();
    p->setTransform(frame.transform, true);
    drawClipped(left, QPalette::HighlightedText);
    if (bar.progress != bar.maximum)
        drawClipped(right, QPalette::Text);
    p->restore();
}

} // namespace

void progressStyle::drawControl(ControlElement element, const QStyleOption *opt, QPainter *p,
                                const QWidget *widget) const
{
    const auto *bar = qstyleoption_cast<const QStyleOptionProgressBar *>(opt);
    if (element == CE_ProgressBarGroove && bar)
        qDrawShadePanel(p, bar->rect, bar->palette, true, panelWidth);
    else if (element == CE_ProgressBarContents && bar)
        p->fillRect(filledPart(*bar), bar->palette.brush(QPalette::Highlight));
    else if (element == CE_ProgressBarLabel && bar)
        drawLabel(*bar, p);
    else
        QCommonStyle::drawControl(element, opt, p, widget);
}

QRect progressStyle::subElementRect(SubElement element, const QStyleOption *opt, const QWidget *widget) const
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
