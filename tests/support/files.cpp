#include "tests/support/files.h"

#include <QDir>
#include <QTest>

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        QTest::qFail("a file cannot be written", __FILE__, __LINE__);
}

QString lockFileOf(const QString &identifier)
{
    return QStringLiteral("/tmp/HalvornRunning_%1.lock").arg(identifier);
}

QByteArray statisticsOf(const QString &identifier)
{
    const QString name = "/currentTimestamps_" + identifier + ".txt";
    return contentOf("/var/instrument" + name) + contentOf("/var/tmp" + name);
}

void removeFilesOf(const QString &identifier)
{
    for (const char *folder : {"/tmp", "/var/tmp", "/var/instrument"}) {
        QDir files(folder);
        for (const QString &name : files.entryList({"*_" + identifier + "[.-]*"}, QDir::Files))
            files.remove(name);
    }
}
