#pragma once

#include <QSocketNotifier>

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
