#pragma once

#include <QString>

/// `fileName` where it names a regular file, else an empty name, which no image is loaded from. Clients
/// choose the names: opening a pipe would make the daemon wait for a writer, and a device may have no end.
QString imageFile(const QString &fileName);
