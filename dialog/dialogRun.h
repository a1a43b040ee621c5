#pragma once

#include <QElapsedTimer>
#include <QTimer>

class QWidget;
class dialogHost;
class dialogLayout;
struct dialogSlots;

/// The progress run of a dialog: its start and end, its percent, and what is shown and told of its estimate
/// once a second. Nothing is owned, and all that is referred to outlives it.
class dialogRun
{
public:
    dialogRun(QWidget &window, const dialogSlots &content, dialogLayout &layout, dialogHost &host);
    Q_DISABLE_COPY_MOVE(dialogRun)

    bool isUnderWay() const { return m_timer.isActive(); }
    /// A run starts when the dialog gets content and ends when it has lost all that is not finished.
    void takeContent();
    /// The same, of content that stays where it is: without a run it shows the average.
    void takeFinished();
    /// Recomputes the average of the bars; a change of it is a snapshot of the run.
    void updatePercent();
    /// The run in progress will not be recorded.
    void willCancel() { m_cancelled = true; }
    /// The same, unless all bars are full; tells whether they are not.
    bool giveUp();
    /// The dialog is a copy of that of `src`, whose run goes on here.
    void goOnFrom(const dialogRun &src);
    /// There are no further ticks.
    void stop() { m_timer.stop(); }

private:
    void start();
    void end();
    int secondsToLearn() const;
    void tick();
    void showEstimate();
    void showAverage();

    const dialogSlots &m_content;
    dialogLayout &m_layout;
    dialogHost &m_host;
    const int m_identity; ///< the window's, in the log

    qint64 m_startSecond = 0; ///< since the epoch
    /// Runs beside the system's, to notice that that was set meanwhile.
    QElapsedTimer m_clock;
    QTimer m_timer; ///< the window's child, by which the fuzzer finds it
    bool m_cancelled = false;
    /// Average of the bars; -1 before the first.
    int m_currentPercent = -1;
};
