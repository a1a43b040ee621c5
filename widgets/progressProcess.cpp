#include "widgets/progressProcess.h"

#include "widgets/appearance.h"

progressProcess::progressProcess(QWidget *parent) : QProgressBar(parent), m_value(QProgressBar::value())
{
    setAutoFillBackground(true);
    setFont(appearance.m_barNumFont);
}

void progressProcess::setLabel(const QString &label)
{
    m_label = label;
    setFont(m_label.isEmpty() ? appearance.m_barNumFont : appearance.m_barLabelFont);
    setFormat(m_label);
}

void progressProcess::setValue(int newValue)
{
    if (newValue >= minimum() && newValue <= maximum())
        changeValue(newValue);
}

void progressProcess::reset()
{
    changeValue(minimum() - 1);
}

void progressProcess::changeValue(int newValue)
{
    if (newValue == m_value)
        return;
    // While the base class lags behind, an update is pending already, or the bar is hidden.
    const bool upToDate = m_value == QProgressBar::value();
    m_value = newValue;
    if (upToDate)
        update();
}

void progressProcess::paintEvent(QPaintEvent *event)
{
    if (m_value != QProgressBar::value()) {
        // Keeps the base class from repainting within the painting.
        setAttribute(Qt::WA_UpdatesDisabled, true);
        if (m_value < minimum())
            QProgressBar::reset();
        else
            QProgressBar::setValue(m_value);
        setAttribute(Qt::WA_UpdatesDisabled, false);
    }
    QProgressBar::paintEvent(event);
}
