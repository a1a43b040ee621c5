#pragma once

#include <QString>

/// The text of a box as far as it is shown. A screen holds less than this, and laying out megabytes takes the
/// toolkit minutes.
QString boxText(const QString &text);

/// How the text is to be shown: as rich text if it looks like that and is harmless. Rich text opens the files
/// it refers to, and reads them whole, whatever they are; and each table inside another one doubles the time
/// that the layout takes.
Qt::TextFormat boxTextFormat(const QString &text);
