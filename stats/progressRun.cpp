#include "stats/progressRun.h"

bool courseWalk::take(int snapshot)
{
    if (snapshot < 0)
        return false;
    const int signature = snapshot % snapshotScale;
    const int rise = (signature - m_signature + snapshotScale) % snapshotScale;
    m_signature = signature;
    if (rise == 0 || rise >= snapshotScale / 2)
        return false;
    m_lastStep = {snapshot / snapshotScale, m_lastStep.way + rise};
    return true;
}

void progressRun::start()
{
    m_elapsed = 0;
    m_snapshots.clear();
    m_seconds.clear();
    m_walk = {};
    ++m_number;
}

void progressRun::append(int actualProgress)
{
    const int snapshot = actualProgress % snapshotScale + m_elapsed * snapshotScale;
    m_snapshots.push_back(snapshot);
    m_seconds.push_back(snapshot / snapshotScale);
    m_walk.take(snapshot);
}
