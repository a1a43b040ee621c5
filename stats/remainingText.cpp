#include "stats/remainingText.h"

QString remainingText(int remainingSeconds)
{
    if (remainingSeconds > 300)
        return QString::asprintf("(%lld min remaining)", (remainingSeconds + 29LL) / 60);
    if (remainingSeconds > 59)
        return QString::asprintf("(%d:%02d remaining)", remainingSeconds / 60, remainingSeconds % 60);
    if (remainingSeconds < 0)
        return {};
    return QString::asprintf("(%d s remaining)", remainingSeconds);
}
