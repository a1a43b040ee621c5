#pragma once

#include <QIcon>
#include <QPixmap>
#include <QSize>
#include <QString>

class QWidget;

/// The file that the toolkit loads as `fileName`, which may lack the suffix of its format; an empty name,
/// which no image is loaded from, where that is no regular file. Clients choose the names: opening a pipe
/// would make the daemon wait for a writer, and a device may have no end.
QString imageFile(const QString &fileName);

/// Whatever is configured, no window and no image in one has to be larger than this, in pixels.
QSize largestSize(const QWidget &window);

/// The icon of such a file, else of that name in the desktop's theme; null where there is neither.
QIcon iconNamed(const QString &name);
/// The icon of the fitted layout's windows: the one that was chosen, else the program's own.
QIcon fittedIcon();

/// The background of a dialog: what `fit` makes of the settings' image and `size`; null where there is none.
/// Each dialog of a series of copies asks for the same one; it is made once and shared.
QPixmap dialogBackground(const QSize &size, QPixmap (*fit)(const QPixmap &, const QSize &));
