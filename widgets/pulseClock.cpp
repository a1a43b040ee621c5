#include "widgets/pulseClock.h"

#include <QMetaMethod>

#include <cmath>

pulseClock &pulseClock::instance()
{
    static pulseClock only;
    return only;
}

double pulseClock::position() const
{
    constexpr double roundTripMs = 2800;
    const double share = std::fmod(static_cast<double>(m_time.elapsed()), roundTripMs) / roundTripMs;
    return share < 0.5 ? 2 * share : 2 - 2 * share;
}

void pulseClock::connectNotify(const QMetaMethod &)
{
    if (m_timer.isActive())
        return;
    constexpr int beatMs = 40;
    m_time.start();
    m_timer.start(beatMs, Qt::PreciseTimer, this);
}

void pulseClock::disconnectNotify(const QMetaMethod &)
{
    if (!isSignalConnected(QMetaMethod::fromSignal(&pulseClock::beat)))
        m_timer.stop();
}

void pulseClock::timerEvent(QTimerEvent *)
{
    emit beat();
}
