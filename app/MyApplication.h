#pragma once

#include <QApplication>
#include <QSocketNotifier>

class QSessionManager;

/// The application object. A session manager that asks it to commit its data ends the daemon in order.
/// Quitting asks no window for permission.
class MyApplication : public QApplication
{
    Q_OBJECT

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

/// An end takes three seconds at most. The toolkit waits for a display that has stopped without end; then
/// `step` is taken, which may only do what a signal's handler may, and the process ends.
void keepEndShort(void (*step)());
/// An end begins, with this status; one of the signals above has done this already.
void limitEnd(int status);
