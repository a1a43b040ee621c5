#include "widgets/fittedLabel.h"

#include "widgets/wrappedText.h"

#include <QPainter>

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

void fittedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    const QStringList lines = wrappedText(text(), font(), width(), maxLines);
    QRect line(0, 0, width(), fontMetrics().lineSpacing());
    for (const QString &part : lines) {
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, part);
        line.translate(0, line.height());
    }
}
