#include "widgets/imageFile.h"

#include <QFileInfo>

QString imageFile(const QString &fileName)
{
    return QFileInfo(fileName).isFile() ? fileName : QString();
}
