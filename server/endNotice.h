#pragma once

#include <QElapsedTimer>

class QWidget;

/// The desktop's notification at the end of a run whose window nobody saw. Windows are not owned.
class endNotice
{
public:
    /// Runs that took longer end with a notification; below 0, as at first, none does.
    void setLeastSeconds(int seconds) { m_leastSeconds = seconds; }
    void begin();
    /// The run in progress has failed.
    void giveUp() { m_isGivenUp = true; }
    /// A client hides the window, which need not be the end.
    void hide(const QWidget &window);
    void showAgain() { m_wasSeen = false; }
    /// `window` is still as the user saw it.
    void end(const QWidget &window);

private:
    int m_leastSeconds = -1;
    QElapsedTimer m_clock;
    bool m_isGivenUp = false;
    bool m_wasSeen = false; ///< until a client hid it
};
