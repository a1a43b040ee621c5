#include "server/endNotice.h"

#include "language/language.h"
#include "platform/sessionBus.h"
#include "platform/windowSystem.h"
#include "widgets/appearance.h"

#include <QWidget>

namespace
{

QString durationText(qint64 seconds)
{
    if (seconds < 60)
        return QString(translated("%1 s")).arg(seconds);
    const qint64 minutes = seconds / 60;
    if (minutes < 60)
        return QString(translated("%1 min")).arg(minutes);
    return QString(translated("%1 h %2 min")).arg(minutes / 60).arg(minutes % 60);
}

bool isInFront(const QWidget &window)
{
    return window.isVisible() && !window.isMinimized() && (window.isActiveWindow() || liesInFront(window));
}

} // namespace

void endNotice::begin()
{
    m_isGivenUp = m_wasSeen = false;
    m_clock.start();
}

void endNotice::hide(const QWidget &window)
{
    m_wasSeen = m_wasSeen || isInFront(window);
}

void endNotice::end(const QWidget &window)
{
    if (m_leastSeconds < 0 || !m_clock.hasExpired(m_leastSeconds * qint64{1000}) || m_wasSeen ||
        isInFront(window))
        return;
    const QString text =
        m_isGivenUp ? QString(translated("failed"))
                    : QString(translated("done after %1")).arg(durationText(m_clock.elapsed() / 1000));
    sessionBus::instance().notify(appearance.m_windowTitle, text, m_isGivenUp);
}
