#include "widgets/imageFile.h"

#include "widgets/appearance.h"

#include <QFileInfo>
#include <QImageReader>
#include <QScreen>
#include <QWidget>

QString imageFile(const QString &fileName)
{
    const auto isUsable = [](const QString &name) {
        const QFileInfo file(name);
        return file.isFile() && file.isReadable();
    };
    if (fileName.isEmpty() || isUsable(fileName))
        return fileName;
    for (const QByteArray &suffix : QImageReader::supportedImageFormats()) {
        if (const QString name = fileName + u'.' + QString::fromLatin1(suffix); isUsable(name))
            return name;
    }
    return {};
}

QSize largestSize(const QWidget &window)
{
    return 2 * window.screen()->virtualSize();
}

QIcon iconNamed(const QString &name)
{
    if (const QPixmap image(imageFile(name)); !image.isNull())
        return {image};
    return name.contains(u'/') ? QIcon() : QIcon::fromTheme(name);
}

QIcon fittedIcon()
{
    const QIcon given = iconNamed(appearance.m_windowIcon);
    return given.isNull() ? QIcon::fromTheme(QStringLiteral("progressd")) : given;
}

QPixmap imageCache::image(const QString &name, const QSize &size,
                          QPixmap (*fit)(const QPixmap &, const QSize &))
{
    const QString fileName = imageFile(name);
    if (fileName.isEmpty())
        return {};
    const QFileInfo file(fileName);
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
