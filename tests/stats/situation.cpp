#include "tests/stats/situation.h"

#include "stats/estimate.h"
#include "stats/snapshots.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

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

logWatch::logWatch()
{
    for (const char *path : {"/var/instrument/VKT-progressbar.log", "/tmp/VKT-progressbar.log"}) {
        QFile log(QString::fromLatin1(path));
        if (log.open(QIODevice::Append)) {
            m_path = path;
            m_start = log.size();
            return;
        }
    }
    qWarning("The log belongs to another user; its records are not checked.");
}

bool logWatch::contains(const std::vector<QByteArray> &texts) const
{
    if (m_path.isEmpty())
        return true;
    const QByteArray log = fileContent(m_path).sliced(m_start);
    qsizetype from = 0;
    for (const QByteArray &text : texts) {
        const qsizetype at = log.indexOf(text + '\n', from);
        if (at < 0)
            return false;
        from = at + text.size();
    }
    return true;
}
