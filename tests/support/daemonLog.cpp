#include "tests/support/daemonLog.h"

#include <QFile>

daemonLog::daemonLog()
{
    for (const char *path : {"/var/instrument/VKT-progressbar.log", "/tmp/VKT-progressbar.log"})
        m_sizes[QLatin1String(path)] = QFile(QLatin1String(path)).size();
}

QByteArray daemonLog::written() const
{
    QByteArray text;
    for (auto log = m_sizes.cbegin(); log != m_sizes.cend(); ++log) {
        QFile file(log.key());
        if (file.open(QIODevice::ReadOnly) && file.seek(log.value()))
            text += file.readAll();
    }
    return text;
}
