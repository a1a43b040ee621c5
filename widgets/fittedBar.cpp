#include "widgets/fittedBar.h"

#include "language/language.h"

#include <QEvent>
#include <QPainter>

namespace
{

// In em.
constexpr double barThickness = 0.5;
constexpr double textGap = 0.4;
constexpr double columnGap = 1.2;

const QString separator = QStringLiteral(" · ");

} // namespace

fittedBar::fittedBar(QWidget *parent) : progressProcess(parent)
{
    setAutoFillBackground(false);
}

void fittedBar::showCaption(const QString &caption)
{
    if (caption == accessibleName())
        return;
    m_caption = QString(caption).replace(u'\n', u' ');
    setAccessibleName(caption);
    update();
}

void fittedBar::showRemaining(const QString &remaining)
{
    if (remaining == m_remaining)
        return;
    m_remaining = remaining;
    update();
}

QSize fittedBar::sizeHint() const
{
    const emLength em(*this);
    QString widest = QStringLiteral("100 %");
    if (m_expectsRemaining)
        widest += separator + widestRemaining();
    int width = m_measuredFigures.width(widest, *this);
    if (!m_caption.isEmpty())
        width += m_measuredCaption.width(m_caption, *this) + em(columnGap);
    return {width, fontMetrics().height() + em(textGap) + em(barThickness)};
}

/// In the user's language either may be the wider one.
QString fittedBar::widestRemaining() const
{
    const QString time = QString(translated("%1 min %2 s left")).arg(59).arg(59);
    const QString overdue = overdueText();
    const QFontMetrics metrics = fontMetrics();
    return metrics.horizontalAdvance(time) < metrics.horizontalAdvance(overdue) ? overdue : time;
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

bool fittedBar::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return progressProcess::event(event);
    showToolTip(*event, *this, m_caption, fontMetrics().horizontalAdvance(m_caption) > captionWidth());
    return true;
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
    painter.end();
    paintText(*this, QPalette::WindowText, m_caption, [this](QPainter &texts) { paintTexts(texts); });
}

/// Both on one baseline, whatever other fonts their letters are taken from; a caption that is read from the
/// right begins there.
void fittedBar::paintTexts(QPainter &painter) const
{
    const QString caption = fontMetrics().elidedText(m_caption, Qt::ElideMiddle, captionWidth());
    const QString figures = figuresText();
    const int baseline = fontMetrics().ascent();
    const bool isFromRight = m_caption.isRightToLeft();
    const auto rightEdge = [this](const QString &text) {
        return width() - fontMetrics().horizontalAdvance(text);
    };
    painter.drawText(isFromRight ? 0 : rightEdge(figures), baseline, figures);
    painter.setLayoutDirection(directionOf(m_caption));
    painter.drawText(isFromRight ? rightEdge(caption) : 0, baseline, caption);
}

QString timeLeft(int seconds)
{
    if (seconds < 60)
        return QString(translated("%1 s left", static_cast<unsigned>(seconds))).arg(seconds);
    const int minutes = seconds / 60;
    if (minutes >= 10 && minutes < 60)
        return QString(translated("%1 min left")).arg(minutes);
    if (minutes < 10)
        return QString(translated("%1 min %2 s left")).arg(minutes).arg(seconds % 60);
    return QString(translated("%1 h %2 min left")).arg(minutes / 60).arg(minutes % 60);
}

QString overdueText()
{
    return translated("longer than usual");
}
