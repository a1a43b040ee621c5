#include "widgets/progressProcess.h"

#include "widgets/appearance.h"

namespace
{

/// While it lives, repaint() of the widget does nothing; afterwards an ordinary update is pending.
class repaintLater
{
public:
    explicit repaintLater(QWidget *widget) : m_widget(widget->isVisible() ? widget : nullptr)
    {
        if (m_widget)
            m_widget->setUpdatesEnabled(false);
    }
    ~repaintLater()
    {
        if (m_widget)
            m_widget->setUpdatesEnabled(true);
    }
    Q_DISABLE_COPY_MOVE(repaintLater)

private:
    QWidget *m_widget; ///< null when it is not visible: then nothing repaints it anyway
};

} // namespace

progressProcess::progressProcess(QWidget *parent) : QProgressBar(parent)
{
    setAutoFillBackground(true);
    setFont(appearance::m_barNumFont);
}

void progressProcess::setLabel(const QString &label)
{
    m_label = label;
    setFont(m_label.isEmpty() ? appearance::m_barNumFont : appearance::m_barLabelFont);
    setFormat(m_label);
}

void progressProcess::setValue(int newValue)
{
    if (newValue == value())
        return;
    const repaintLater guard(this);
    QProgressBar::setValue(newValue);
}

void progressProcess::reset()
{
    const repaintLater guard(this);
    QProgressBar::reset();
}
