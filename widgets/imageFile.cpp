#include "widgets/imageFile.h"

#include "widgets/appearance.h"

#include <QDateTime>
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

QPixmap dialogBackground(const QSize &size, QPixmap (*fit)(const QPixmap &, const QSize &))
{
    static struct {
        QString fileName;
        QDateTime changed;
        qint64 bytes = -1;
        QSize size;
        QPixmap (*fit)(const QPixmap &, const QSize &) = nullptr;
        QPixmap image;
    } last;
    const QString fileName = imageFile(appearance.m_windowPixmap);
    if (fileName.isEmpty())
        return {};
    const QFileInfo file(fileName);
    const bool isKept = fileName == last.fileName && file.lastModified() == last.changed &&
                        file.size() == last.bytes && size == last.size && fit == last.fit;
    if (!isKept) {
        const QPixmap loaded(fileName);
        last = {fileName, file.lastModified(), file.size(), size, fit, {}};
        if (!loaded.isNull())
            last.image = fit(loaded, size);
    }
    return last.image;
}
