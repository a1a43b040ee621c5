#pragma once

#include <QBasicTimer>
#include <QObject>
#include <QPointer>

#include <algorithm>

class QWidget;

/// What the taskbar shows of a run, told five times a second at most: on the session bus, and on X11 beside
/// the window as well. The last state is always told, at the latest when this goes.
class taskbarEntry : public QObject
{
public:
    ~taskbarEntry() override;

    /// The window that shows the run; not owned.
    void follow(QWidget *window);
    /// How far the run is, 0 to 100; below 0 when there is none.
    void setPercent(int percent)
    {
        m_state.percent = std::min(percent, 100);
        tellSoon();
    }
    void setUrgent(bool isUrgent)
    {
        m_state.isUrgent = isUrgent;
        tellSoon();
    }
    /// No run, and nothing urgent: told at once.
    void clear();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    struct state {
        int percent = -1;
        bool isUrgent = false;
        bool operator==(const state &) const = default;
    };

    void tellSoon()
    {
        if (!m_pause.isActive())
            tell();
    }
    void tell();

    QPointer<QWidget> m_window;
    state m_state;
    state m_told;
    QBasicTimer m_pause;
};
