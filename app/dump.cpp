#include "app/dump.h"

#include <QDateTime>

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace
{

/// Path of the log file in use; filled anew on every call.
char logfile[1024];

FILE *openLog()
{
    for (const char *path : {"/var/instrument/VKT-progressbar.log", "/tmp/VKT-progressbar.log"}) {
        std::strncpy(logfile, path, sizeof logfile - 1);
        if (FILE *log = std::fopen(logfile, "ae"))
            return log;
    }
    return nullptr;
}

QByteArray localTime()
{
    return QDateTime::currentDateTime().toString(Qt::TextDate).toLatin1();
}

} // namespace

void dump(const char *description, int result, int dataLen, const int *data)
{
    FILE *log = openLog();
    if (!log)
        return;

    const bool emptyLineAfter = description[0] == '#';
    std::fprintf(log, "%s: %s result=%04d", localTime().constData(), description + (emptyLineAfter ? 1 : 0),
                 result);
    if (data) {
        std::fputc(':', log);
        for (int i = 0; i < dataLen; ++i)
            std::fprintf(log, "%07d.", data[i]);
    }
    std::fputs(emptyLineAfter ? "\n\n" : "\n", log);
    std::fclose(log);
}

void prepareDump()
{
    localTime();
}

int dumpIdentity(const void *object)
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(object));
}
