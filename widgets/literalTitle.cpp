#include "widgets/literalTitle.h"

QString literalTitle(const QString &title)
{
    if (title.isEmpty())
        return QStringLiteral(" ");
    return QString(title).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
}
