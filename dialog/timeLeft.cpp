#include "dialog/timeLeft.h"

QString timeLeft(int seconds)
{
    if (seconds < 60)
        return QStringLiteral("%1 s left").arg(seconds);
    const int minutes = seconds / 60;
    if (minutes >= 10 && minutes < 60)
        return QStringLiteral("%1 min left").arg(minutes);
    if (minutes < 10)
        return QStringLiteral("%1 min %2 s left").arg(minutes).arg(seconds % 60);
    return QStringLiteral("%1 h %2 min left").arg(minutes / 60).arg(minutes % 60);
}
