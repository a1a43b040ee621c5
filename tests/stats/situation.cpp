#include "tests/stats/situation.h"

#include "stats/estimate.h"
#include "stats/snapshots.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <unistd.h>

void startAnew()
{
    m_snapshotcount = 0;
    clearSnapshots();
    m_currentElapsed = -1;
    resetEstimate();
}

int addRecord(int total, int found, const course &snapshots, qint64 time)
{
    const int record = m_snapshotcount++;
    m_snapshottime[record] = QDateTime::fromSecsSinceEpoch(time);
    m_snapshottotal[record] = total;
    m_snapshotfound[record] = found;
    m_snapshotfits[record] = -7;
    setRecordData(record, snapshots);
    return record;
}

course recordCourse(int record)
{
    return course(m_snapshotdata[record].get(), m_snapshotdata[record].get() + m_snapshottlen[record]);
}

void setPool(const course &snapshots)
{
    clearSnapshots();
    for (const int snapshot : snapshots) {
        m_currentElapsed = snapshot / 1000;
        addSnapshot(snapshot % 1000);
    }
}

ownIdentifier::ownIdentifier()
{
    static int count = 0;
    m_name = "test-" + QByteArray::number(getpid()) + '-' + QByteArray::number(++count);
}

ownIdentifier::~ownIdentifier()
{
    for (const QByteArray &path : {firstPath(), fallbackPath()}) {
        QFile::remove(path);
        QDir().rmdir(path);
    }
}

bool ownIdentifier::firstIsUsable()
{
    return access("/var/instrument", W_OK | X_OK) == 0;
}

QByteArray fileContent(const QByteArray &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QByteArray &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", path.constData());
}

bool hasLines(const daemonLog &log, const QByteArrayList &lines)
{
    const auto isWritable = [](const char *path) { return access(path, W_OK) == 0; };
    const bool isForeign = QFile::exists(QStringLiteral("/tmp/VKT-progressbar.log")) &&
                           !isWritable("/tmp/VKT-progressbar.log") && !isWritable("/var/instrument");
    if (isForeign)
        qWarning("The log belongs to another user; its records are not checked.");
    const QByteArray written = log.written();
    return isForeign ||
           std::ranges::all_of(lines, [&](const QByteArray &line) { return written.contains(line + '\n'); });
}
