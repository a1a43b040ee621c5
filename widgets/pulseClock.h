#pragma once

#include <QBasicTimer>
#include <QElapsedTimer>
#include <QObject>

/// Moves all pulsing bars together, so that their pictures are painted together. It beats 25 times a second
/// while bars that are on the screen listen, and rests otherwise.
class pulseClock : public QObject
{
    Q_OBJECT

public:
    static pulseClock &instance();

    /// How far the pulse has come now on its way to and fro: 0 at the one end of a bar, 1 at the other.
    double position() const;

signals:
    void beat();

protected:
    void connectNotify(const QMetaMethod &signal) override;
    void disconnectNotify(const QMetaMethod &signal) override;
    void timerEvent(QTimerEvent *event) override;

private:
    pulseClock() = default;

    QBasicTimer m_timer;
    QElapsedTimer m_time;
};
