#include "dialog/dialogRun.h"

#include "dialog/dialogHost.h"
#include "dialog/dialogLayout.h"
#include "log/dump.h"
#include "stats/statistics.h"
#include "widgets/progressProcess.h"

#include <QDateTime>

#include <algorithm>
#include <cstdlib>

dialogRun::dialogRun(QWidget &window, const dialogSlots &content, dialogLayout &layout, dialogHost &host)
    : m_content(content), m_layout(layout), m_host(host), m_identity(dumpIdentity(&window)), m_timer(&window)
{
    constexpr int tickMs = 1000;
    m_timer.setInterval(tickMs);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.callOnTimeout([this] { tick(); });
}

void dialogRun::takeContent()
{
    if (const bool runs = m_content.hasUnfinished(); runs != isUnderWay()) {
        runs ? start() : end();
        m_host.runChanged(runs);
    }
}

void dialogRun::takeFinished()
{
    const bool ran = isUnderWay();
    takeContent();
    if (ran && !isUnderWay())
        showAverage();
}

void dialogRun::goOnFrom(const dialogRun &src)
{
    m_currentPercent = src.m_currentPercent;
    m_startSecond = src.m_startSecond;
    m_clock = src.m_clock;
    if (!src.isUnderWay())
        return;
    m_timer.start();
    tick();
}

void dialogRun::start()
{
    m_startSecond = QDateTime::currentSecsSinceEpoch();
    m_clock.start();
    m_timer.start();
    m_cancelled = false;
    statistics.startRun();
}

void dialogRun::end()
{
    m_timer.stop();
    dump("---- resetting timer", 0);
    statistics.endRun(m_cancelled ? 0 : secondsToLearn());
}

/// A run across which the clock was set (or the machine slept) has no duration worth learning, 0: a record of
/// years would follow, and be followed by, every later run.
int dialogRun::secondsToLearn() const
{
    constexpr qint64 toleratedSeconds = 5;
    const qint64 seconds = QDateTime::currentSecsSinceEpoch() - m_startSecond;
    if (std::abs(seconds - m_clock.elapsed() / 1000) <= toleratedSeconds)
        return static_cast<int>(seconds);
    dump("---- clock set during the run, not learned", static_cast<int>(seconds));
    return 0;
}

bool dialogRun::giveUp()
{
    constexpr int full = 100;
    if (m_currentPercent >= full)
        return false;
    willCancel();
    return true;
}

void dialogRun::tick()
{
    statistics.setElapsed(QDateTime::currentSecsSinceEpoch() - m_startSecond);
    const estimateStep step = statistics.advance(m_currentPercent, m_identity);
    if (step == estimateStep::dropped)
        m_layout.captionTotalBar();
    else if (step == estimateStep::vanished)
        showAverage();
    else if (step == estimateStep::display)
        showEstimate();
}

void dialogRun::showEstimate()
{
    const int elapsed = statistics.run().elapsed();
    const int total = statistics.estimate().total();
    if (total <= 0)
        return;
    if (total < elapsed)
        return showAverage();
    const remainingTime remaining = statistics.estimate().remaining(elapsed);
    m_layout.showRemaining(remaining);
    const int percent = static_cast<int>(qint64{elapsed} * 100 / total);
    m_content.m_totalBar->setValue(percent);
    m_host.updateTotalPercent(percent, remaining.seconds);
}

void dialogRun::showAverage()
{
    m_layout.captionTotalBar();
    m_content.m_totalBar->setValue(m_currentPercent);
    m_host.updateTotalPercent(m_currentPercent, -1);
    m_layout.hideTotalBar();
}

void dialogRun::updatePercent()
{
    int maxProgress = 0;
    int actualProgress = 0;
    int dispProgress = 0;
    for (int i = 0; i < dialogSlots::MAX_ENTRIES; ++i) {
        if (!m_content.barVisible[i])
            continue;
        ++maxProgress;
        actualProgress += m_content.bars[i]->value() + 100 * i;
        dispProgress += m_content.bars[i]->value();
    }
    const int avgPercent = dispProgress / std::max(maxProgress, 1);
    if (avgPercent == m_currentPercent)
        return;
    m_currentPercent = avgPercent;
    statistics.addSnapshot(actualProgress);
    if (statistics.estimate().total() != -1)
        return;
    m_content.m_totalBar->setValue(avgPercent);
    m_host.updateTotalPercent(avgPercent, -1);
    m_layout.hideTotalBar();
}
