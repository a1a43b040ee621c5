#pragma once

#include <QApplication>
#include <QSocketNotifier>

class QSessionManager;

/// The application object. A session manager that asks it to commit its data ends the daemon in order.
/// Quitting asks no window for permission.
class MyApplication : public QApplication
{
public:
    MyApplication(int &argc, char **argv);

    void commitData(QSessionManager &manager);

protected:
    bool event(QEvent *event) override;
};

/// While one lives, SIGTERM, SIGINT and SIGHUP end the event loop with 128 plus their number, in order; one
/// that was ignored at the start stays ignored. Repeated ones change nothing.
class endSignals
{
public:
    endSignals();

private:
    QSocketNotifier m_notifier;
};

/// What is done last when an end takes too long: the toolkit waits without end for a display that has
/// stopped. It may only do what a signal's handler may.
void keepEndShort(void (*step)());
/// An end is under way, with this status unless one of the signals above has begun it. What comes next may
/// take so many seconds; then the last step is done, and the process ends.
void limitEnd(int status, unsigned seconds = 3);
