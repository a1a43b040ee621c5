#include "widgets/fittedLabel.h"

#include "widgets/wrappedText.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

namespace
{

constexpr int maxLines = 3;

} // namespace

fittedLabel::fittedLabel(QWidget *parent) : progressLabel(parent) {}

QSize fittedLabel::sizeHint() const
{
    return {textWidth(text(), *this), fontMetrics().lineSpacing()};
}

int fittedLabel::linesFor(int width) const
{
    return static_cast<int>(wrappedText(text(), font(), width, maxLines).size());
}

bool fittedLabel::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return progressLabel::event(event);
    const bool isCut = wrappedText(text(), font(), width(), maxLines + 1).size() > maxLines;
    QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), isCut ? toolTipText(text()) : QString(),
                       this);
    return true;
}

void fittedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(window()->palette().color(QPalette::WindowText));
    painter.setLayoutDirection(directionOf(text())); // what is left turns into right with it
    const QStringList lines = wrappedText(text(), font(), width(), maxLines);
    QRect line(0, 0, width(), fontMetrics().lineSpacing());
    for (const QString &part : lines) {
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, part);
        line.translate(0, line.height());
    }
}
