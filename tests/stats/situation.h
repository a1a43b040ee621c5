#pragma once

#include "stats/runTable.h"
#include "tests/support/daemonLog.h"

#include <QByteArray>

#include <vector>

/// What the tests of the statistics start from, told in one line each.

using course = std::vector<int>;

/// No records, no snapshots, no estimate.
void startAnew();

/// Appends a record; its time is `time` seconds since the epoch. Returns its index.
int addRecord(int total, int found, const course &snapshots, qint64 time = 1000);

course recordCourse(int record);

/// Fills the pool as a run of that course would.
void setPool(const course &snapshots);

/// An identifier that no other process and no other call in this one has; both of its files (whatever stands
/// at their paths) are removed when it goes.
class ownIdentifier
{
public:
    ownIdentifier();
    ~ownIdentifier();
    ownIdentifier(const ownIdentifier &) = delete;
    ownIdentifier &operator=(const ownIdentifier &) = delete;

    const char *name() const { return m_name.constData(); }
    QByteArray firstPath() const { return "/var/instrument/currentTimestamps_" + m_name + ".txt"; }
    QByteArray fallbackPath() const { return "/var/tmp/currentTimestamps_" + m_name + ".txt"; }
    /// Where a file that does not exist yet is made.
    QByteArray usualPath() const { return firstIsUsable() ? firstPath() : fallbackPath(); }
    static bool firstIsUsable();

private:
    QByteArray m_name;
};

QByteArray fileContent(const QByteArray &path);
void writeFile(const QByteArray &path, const QByteArray &content);

/// Whether all of these records were written; nobody can tell where the log belongs to another user.
bool hasLines(const daemonLog &log, const QByteArrayList &lines);
