#include "widgets/imageFile.h"

#include <QFileInfo>

QString imageFile(const QString &fileName)
{
    return QFileInfo(fileName).isFile() ? fileName : QString();
}

QPixmap imageCache::image(const QString &fileName, const QSize &size,
                          QPixmap (*fit)(const QPixmap &, const QSize &))
{
    const QFileInfo file(fileName);
    if (!file.isFile())
        return {};
    const bool isKept = fileName == m_fileName && file.lastModified() == m_changed &&
                        file.size() == m_bytes && size == m_size;
    if (!isKept) {
        m_fileName = fileName;
        m_changed = file.lastModified();
        m_bytes = file.size();
        m_size = size;
        const QPixmap loaded(fileName);
        m_image = loaded.isNull() ? QPixmap() : fit(loaded, size);
    }
    return m_image;
}
