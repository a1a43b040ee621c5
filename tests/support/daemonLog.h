#pragma once

#include <QByteArray>
#include <QHash>

/// What was written to the diagnostic log from now on. All daemons of the machine share the log, so what is
/// found in it may be another's unless the record names something of one's own.
class daemonLog
{
public:
    daemonLog();

    bool contains(const QByteArray &text) const { return written().contains(text); }
    QByteArray written() const;

private:
    QHash<QString, qint64> m_sizes;
};
