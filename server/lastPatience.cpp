#include "server/lastPatience.h"

#include <QDeadlineTimer>

int lastPatienceMs()
{
    constexpr int patienceMs = 2000;
    static const QDeadlineTimer deadline(patienceMs);
    return static_cast<int>(deadline.remainingTime());
}
