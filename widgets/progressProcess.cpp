#include "widgets/progressProcess.h"

#include "widgets/appearance.h"
#include "widgets/pulseClock.h"

#include <QStyleOptionProgressBar>
#include <QStylePainter>
#include <QWindow>

#include <utility>

namespace
{

constexpr int lowest = 0;
constexpr int highest = 100;
constexpr int none = lowest - 1;

} // namespace

progressProcess::progressProcess(QWidget *parent) : QProgressBar(parent), m_value(none), m_passedOn(none)
{
    setAutoFillBackground(true);
    setLocale(QLocale::c()); // for the digits
    setFont(appearance.m_barNumFont);
}

void progressProcess::setLabel(const QString &label)
{
    setFont(label.isEmpty() ? appearance.m_barNumFont : appearance.m_barLabelFont);
    setFormat(label);
}

void progressProcess::setCaption(const QString &text)
{
    setLabel(text + QStringLiteral(" %p% "));
    setAccessibleName(text);
}

void progressProcess::setValue(int newValue)
{
    if (std::exchange(m_isPulsing, false)) {
        followClock(false);
        update();
    }
    if (newValue < lowest || newValue > highest || newValue == m_value)
        return;
    // While the base class lags behind, an update is pending already, or the bar is hidden.
    const bool upToDate = m_value == m_passedOn;
    m_value = newValue;
    if (upToDate)
        update();
}

void progressProcess::passValueOn()
{
    if (m_value == m_passedOn)
        return;
    m_passedOn = m_value;
    // Keeps the base class from repainting within the painting.
    setAttribute(Qt::WA_UpdatesDisabled, true);
    QProgressBar::setValue(m_value);
    setAttribute(Qt::WA_UpdatesDisabled, false);
}

void progressProcess::paintEvent(QPaintEvent *event)
{
    passValueOn();
    if (m_isPulsing)
        paintPulse();
    else
        QProgressBar::paintEvent(event);
}

void progressProcess::pulse()
{
    if (m_isPulsing)
        return;
    m_isPulsing = true;
    followClock(isVisible());
    update();
}

void progressProcess::showEvent(QShowEvent *event)
{
    followClock(m_isPulsing);
    QProgressBar::showEvent(event);
}

void progressProcess::hideEvent(QHideEvent *event)
{
    followClock(false);
    QProgressBar::hideEvent(event);
}

void progressProcess::followClock(bool follows)
{
    if (follows)
        connect(&pulseClock::instance(), &pulseClock::beat, this, &progressProcess::movePulse,
                Qt::UniqueConnection);
    else
        disconnect(&pulseClock::instance(), nullptr, this, nullptr);
}

/// A window that is minimised or not yet on the screen gets no pictures.
void progressProcess::movePulse()
{
    const QWindow *handle = window()->windowHandle();
    if (handle && handle->isExposed())
        update(m_paintedPulse | pulseRect());
}

QRect progressProcess::pulseTrack() const
{
    QStyleOptionProgressBar option;
    initStyleOption(&option);
    return style()->subElementRect(QStyle::SE_ProgressBarContents, &option, this);
}

QRect progressProcess::pulseRect() const
{
    constexpr int part = 4;
    QRect block = pulseTrack();
    const int way = block.width() - block.width() / part;
    block.setWidth(block.width() / part);
    block.translate(qRound(way * pulseClock::instance().position()), 0);
    return block;
}

QRect progressProcess::paintedPulse()
{
    return m_paintedPulse = pulseRect();
}

void progressProcess::paintPulse()
{
    const QRect block = paintedPulse();
    QStyleOptionProgressBar option;
    initStyleOption(&option);
    option.progress = option.minimum;
    option.text = accessibleName();

    QStylePainter painter(this);
    painter.drawControl(QStyle::CE_ProgressBarGroove, option);
    painter.drawControl(QStyle::CE_ProgressBarLabel, option);
    painter.setClipRect(block, Qt::IntersectClip);
    painter.fillRect(block, palette().brush(QPalette::Highlight));
    painter.setPen(palette().color(QPalette::HighlightedText));
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine, option.text);
}
