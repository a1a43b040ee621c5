#include "dialog/CProgressDialog.h"

#include "dialog/dialogHost.h"
#include "dialog/dialogLayout.h"
#include "log/dump.h"
#include "stats/statistics.h"
#include "widgets/progressProcess.h"

#include <algorithm>
#include <cstdlib>

/// The end of every layout pass: a run starts when the dialog gets content and ends when it has lost all that
/// is not finished.
bool CProgressDialog::takeTimingStep(bool inAction)
{
    if (m_justcopied) {
        m_justcopied = false;
        return inAction;
    }
    const bool isChanged = m_isActive != inAction;
    m_isActive = inAction;
    if (const bool runs = hasUnfinished(); runs != (m_timerId != -1)) {
        runs ? startRun() : endRun();
        m_host.runChanged(runs);
    }
    if (!isChanged)
        return inAction;
    m_host.progressVisibilityChanged(inAction);
    return inAction;
}

void CProgressDialog::startRun()
{
    m_startTime = QDateTime::currentDateTime();
    m_runClock.start();
    m_timerId = startTimer(1000, Qt::PreciseTimer);
    m_cancelled = false;
    statistics.startRun();
}

void CProgressDialog::endRun()
{
    if (m_timerId != -1)
        killTimer(m_timerId);
    dump("---- resetting timer", 0);
    m_timerId = -1;
    m_stopTime = QDateTime::currentDateTime();
    statistics.endRun(m_cancelled ? 0 : secondsToLearn());
}

/// A run across which the clock was set (or the machine slept) has no duration worth learning, 0: a record of
/// years would follow, and be followed by, every later run.
int CProgressDialog::secondsToLearn() const
{
    constexpr qint64 toleratedSeconds = 5;
    const qint64 seconds = m_stopTime.toSecsSinceEpoch() - m_startTime.toSecsSinceEpoch();
    if (std::abs(seconds - m_runClock.elapsed() / 1000) <= toleratedSeconds)
        return static_cast<int>(seconds);
    dump("---- clock set during the run, not learned", static_cast<int>(seconds));
    return 0;
}

bool CProgressDialog::giveUpRun()
{
    constexpr int full = 100;
    if (m_currentPercent >= full)
        return false;
    willCancel();
    return true;
}

void CProgressDialog::timerEvent(QTimerEvent *)
{
    tick();
}

void CProgressDialog::tick()
{
    // Snapshots hold milliseconds in an int; a clock that was set far away must not leave its range.
    constexpr qint64 farthest = 2147482;
    const qint64 seconds = QDateTime::currentSecsSinceEpoch() - m_startTime.toSecsSinceEpoch();
    const int elapsed = static_cast<int>(std::clamp(seconds, -farthest, farthest));
    const estimateStep step = m_timerId == -1
                                  ? statistics.hold(elapsed)
                                  : statistics.advance(elapsed, m_currentPercent, dumpIdentity(this));
    if (step == estimateStep::dropped)
        m_layout->captionTotalBar();
    else if (step == estimateStep::vanished)
        showAverage();
    else if (step == estimateStep::display)
        showEstimate(elapsed);
}

void CProgressDialog::showEstimate(int elapsed)
{
    const int total = statistics.estimate().total();
    if (total <= 0)
        return;
    if (total < elapsed)
        return showAverage();
    const remainingTime remaining = statistics.estimate().remaining(elapsed);
    m_layout->showRemaining(remaining);
    const int percent = static_cast<int>(qint64{elapsed} * 100 / total);
    m_totalBar->setValue(percent);
    m_host.updateTotalPercent(percent, remaining.seconds);
    m_layout->showTotalBar(true);
}

void CProgressDialog::showAverage()
{
    m_layout->captionTotalBar();
    m_totalBar->setValue(m_currentPercent);
    m_host.updateTotalPercent(m_currentPercent, -1);
    m_layout->showTotalBar(false);
}

void CProgressDialog::updatePercent()
{
    int maxProgress = 0;
    int actualProgress = 0;
    int dispProgress = 0;
    for (int i = 0; i < MAX_ENTRIES; ++i) {
        if (!barVisible[i])
            continue;
        ++maxProgress;
        actualProgress += bars[i]->value() + 100 * i;
        dispProgress += bars[i]->value();
    }
    const int avgPercent = dispProgress / std::max(maxProgress, 1);
    if (avgPercent == m_currentPercent)
        return;
    m_currentPercent = avgPercent;
    statistics.addSnapshot(actualProgress);
    if (statistics.estimate().total() != -1)
        return;
    m_totalBar->setValue(avgPercent);
    m_host.updateTotalPercent(avgPercent, -1);
    m_layout->showTotalBar(false);
}

void CProgressDialog::updateBar(int id, int percent)
{
    if (hasRow(id)) {
        if (percent == -1) {
            dump("   ++ progress bar would be canceled, value -1 given", 0);
            percent = 100;
        }
        bars[id]->setValue(percent);
    }
    updatePercent();
}
