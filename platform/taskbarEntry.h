#pragma once

#include <QObject>
#include <QPointer>
#include <QTimer>

class QWidget;

/// What the taskbar shows of a run, told five times a second at most: on the session bus, and on X11 beside
/// the window as well. The last state is always told, at the latest when this goes.
class taskbarEntry : public QObject
{
public:
    taskbarEntry();
    ~taskbarEntry() override;

    /// The window that shows the run; not owned.
    void follow(QWidget *window);
    /// How far the run is, 0 to 100; below 0 when there is none.
    void setPercent(int percent);
    void setUrgent(bool isUrgent);
    /// No run, and nothing urgent: told at once.
    void clear();

private:
    struct state {
        int percent = -1;
        bool isUrgent = false;
        bool operator==(const state &) const = default;
    };

    void tellSoon();
    void tell();

    QPointer<QWidget> m_window;
    state m_state;
    state m_told;
    QTimer m_pause;
};
