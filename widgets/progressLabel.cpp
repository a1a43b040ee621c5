#include "widgets/progressLabel.h"

#include "widgets/appearance.h"

#include <QEvent>
#include <QPainter>

namespace
{

constexpr int maxLines = 3;

} // namespace

progressLabel::progressLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setAutoFillBackground(false);
    setFont(appearance.m_labelFont);
}

fittedLabel::fittedLabel(QWidget *parent) : progressLabel(parent) {}

QSize fittedLabel::sizeHint() const
{
    return {m_measured.width(text(), *this), fontMetrics().lineSpacing()};
}

const QStringList &fittedLabel::lines(int width) const
{
    if (width != m_wrappedWidth || text() != m_wrappedText || font() != m_wrappedFont) {
        m_lines = wrappedText(text(), font(), width, maxLines);
        m_wrappedWidth = width;
        m_wrappedText = text();
        m_wrappedFont = font();
    }
    return m_lines;
}

int fittedLabel::linesFor(int width) const
{
    return static_cast<int>(lines(width).size());
}

bool fittedLabel::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return progressLabel::event(event);
    showToolTip(*event, *this, text(), wrappedText(text(), font(), width(), maxLines + 1).size() > maxLines);
    return true;
}

void fittedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(window()->palette().color(QPalette::WindowText));
    painter.setLayoutDirection(directionOf(text())); // what is left turns into right with it
    QRect line(0, 0, width(), fontMetrics().lineSpacing());
    for (const QString &part : lines(width())) {
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, part);
        line.translate(0, line.height());
    }
}
