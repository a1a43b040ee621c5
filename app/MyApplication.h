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
/// that was ignored at the start stays ignored. Repeated ones change nothing, but an end that takes longer
/// than half a minute, with a display that has stopped, say, is cut short.
class endSignals
{
public:
    endSignals();

private:
    QSocketNotifier m_notifier;
};
