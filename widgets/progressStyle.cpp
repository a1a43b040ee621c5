#include "widgets/progressStyle.h"

#include <QPainter>
#include <QStyleOptionProgressBar>

#include <algorithm>
#include <limits>

namespace
{

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

/// How many of `chunks` are filled, rounded to the nearest; -1 when the bar has no range. Large values are
/// scaled down by the number of chunks first, which loses their last digits: where the colour edge of a
/// bar with a huge range falls depends on it.
int filledChunks(const QStyleOptionProgressBar &bar, int chunks)
{
    qint64 done = qint64(bar.progress) - bar.minimum;
    qint64 range = std::max<qint64>(0, qint64(bar.maximum) - bar.minimum);
    if (chunks > 0 && bar.progress >= std::numeric_limits<int>::max() / chunks && range >= chunks) {
        done /= chunks;
        range /= chunks;
    }
    if (range == 0)
        return -1;
    return int(std::max<qint64>(0, (chunks * done + range / 2) / range));
}

void drawLabel(const QStyleOptionProgressBar &bar, const labelFrame &frame, int filled, QPainter *p)
{
    const QRect &rect = frame.rect;
    const QRect left(rect.x(), rect.y(), filled, rect.height());
    const QRect right(rect.x() + filled, rect.y(), rect.width() - filled, rect.height());

    const auto drawClipped = [&](const QRect &part, QPalette::ColorRole role) {
        p->setClipRect(QStyle::visualRect(frame.fillDirection, rect, part), Qt::ReplaceClip);
        p->setPen(bar.palette.brush(QPalette::Current, role).color());
        p->drawText(rect, Qt::AlignCenter | Qt::TextSingleLine, bar.text);
    };
    drawClipped(left, QPalette::HighlightedText);
    if (bar.progress != bar.maximum)
        drawClipped(right, QPalette::Text);
}

} // namespace

void progressStyle::drawControl(ControlElement element, const QStyleOption *opt, QPainter *p,
                                const QWidget *widget) const
{
    if (element != CE_ProgressBarLabel) {
        motifStyle::drawControl(element, opt, p, widget);
        return;
    }
    const auto *bar = qstyleoption_cast<const QStyleOptionProgressBar *>(opt);
    if (!bar || !bar->textVisible)
        return;
    const labelFrame frame = frameOf(*bar);
    const int chunkWidth = std::max(1, proxy()->pixelMetric(PM_ProgressBarChunkWidth, opt, widget));
    const int chunks = filledChunks(*bar, frame.rect.width() / chunkWidth);
    if (chunks < 0)
        return;

    p->save();
    p->setTransform(frame.transform, true);
    drawLabel(*bar, frame, chunks * chunkWidth, p);
    p->restore();
}
