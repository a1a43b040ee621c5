#include "app/lockFile.h"

#include <QFile>

#include <cstdio>

namespace
{

char configpath[4096];

} // namespace

bool setLockFile(const char *identifier)
{
    const int length =
        std::snprintf(configpath, sizeof configpath, "/tmp/HalvornRunning_%s.lock", identifier);
    return length >= 0 && static_cast<size_t>(length) < sizeof configpath;
}

void writeLockFile(int commandPort, int eventPort)
{
    QFile file(QFile::decodeName(configpath));
    if (!file.open(QIODevice::WriteOnly))
        return;
    file.write(QByteArray::number(commandPort) + '\n');
    file.write(QByteArray::number(eventPort) + '\n');
}

void removeLockFile()
{
    QFile::remove(QFile::decodeName(configpath));
}
