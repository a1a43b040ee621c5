#include "widgets/fittedBar.h"

#include "widgets/emLength.h"
#include "widgets/wrappedText.h"

#include <QPainter>

namespace
{

// In em.
constexpr double barThickness = 0.5;
constexpr double textGap = 0.4;
constexpr double columnGap = 1.2;

const QString separator = QStringLiteral(" · ");

/// The caption as one line.
QString singleLine(QString text)
{
    return text.replace(u'\n', u' ');
}

} // namespace

fittedBar::fittedBar(QWidget *parent) : progressProcess(parent)
{
    setAutoFillBackground(false);
}

void fittedBar::showCaption(const QString &caption)
{
    m_caption = singleLine(caption);
    setAccessibleName(caption);
    updateToolTip();
    update();
}

void fittedBar::showRemaining(const QString &remaining)
{
    if (remaining == m_remaining)
        return;
    m_remaining = remaining;
    updateToolTip();
    update();
}

QSize fittedBar::sizeHint() const
{
    const emLength em(*this);
    QString widest = QStringLiteral("100 %");
    if (m_expectsRemaining)
        widest += separator + QStringLiteral("59 min 59 s left");
    int width = textWidth(widest, *this);
    if (!m_caption.isEmpty())
        width += textWidth(m_caption, *this) + em(columnGap);
    return {width, fontMetrics().height() + em(textGap) + em(barThickness)};
}

QString fittedBar::figuresText() const
{
    if (isPulsing())
        return m_remaining;
    const QString percent = QStringLiteral("%1 %").arg(value());
    return m_remaining.isEmpty() ? percent : percent + separator + m_remaining;
}

int fittedBar::captionWidth() const
{
    const QString figures = figuresText();
    return figures.isEmpty()
               ? width()
               : width() - fontMetrics().horizontalAdvance(figures) - emLength(*this)(columnGap);
}

void fittedBar::updateToolTip()
{
    const bool isCut = fontMetrics().horizontalAdvance(m_caption) > captionWidth();
    setToolTip(isCut ? toolTipText(m_caption) : QString());
}

void fittedBar::resizeEvent(QResizeEvent *event)
{
    updateToolTip();
    progressProcess::resizeEvent(event);
}

QRect fittedBar::pulseTrack() const
{
    const int thickness = emLength(*this)(barThickness);
    return {0, height() - thickness, width(), thickness};
}

/// From a dot at the least percent to the whole length.
QRect fittedBar::filledRect() const
{
    QRect filled = pulseTrack();
    const int share = std::max(value(), 0);
    const int dot = filled.height();
    filled.setWidth(share > 0 ? dot + (filled.width() - dot) * share / 100 : 0);
    return filled;
}

void fittedBar::paintEvent(QPaintEvent *)
{
    passValueOn();
    QPainter painter(this);
    const QRect track = pulseTrack();
    const QRect text(0, 0, width(), track.top());
    painter.setPen(window()->palette().color(QPalette::WindowText));
    const QString caption = fontMetrics().elidedText(m_caption, Qt::ElideMiddle, captionWidth());
    painter.setLayoutDirection(directionOf(m_caption));
    painter.drawText(text, Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignTop | Qt::TextSingleLine, caption);
    painter.setLayoutDirection(Qt::LeftToRight);
    painter.drawText(text, Qt::AlignRight | Qt::AlignTop | Qt::TextSingleLine, figuresText());

    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const auto drawRounded = [&painter](const QRect &rect, const QBrush &brush) {
        painter.setBrush(brush);
        painter.drawRoundedRect(rect, rect.height() / 2.0, rect.height() / 2.0);
    };
    drawRounded(track, window()->palette().brush(QPalette::Base));
    const QRect filled = isPulsing() ? paintedPulse() : filledRect();
    if (!filled.isEmpty())
        drawRounded(filled, window()->palette().brush(QPalette::Highlight));
}
