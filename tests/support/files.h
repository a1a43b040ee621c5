#pragma once

#include <QByteArray>
#include <QString>

/// The content of a file, empty when there is none.
QByteArray contentOf(const QString &path);
/// Fails the test when that is not possible.
void writeFile(const QString &path, const QByteArray &content);

QString lockFileOf(const QString &identifier);
/// What a daemon has saved under this identifier.
QByteArray statisticsOf(const QString &identifier);
/// Removes the files of the daemons with this identifier, alone or with something behind a hyphen.
void removeFilesOf(const QString &identifier);
