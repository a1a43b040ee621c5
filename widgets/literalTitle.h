#pragma once

#include <QString>

/// What to give the toolkit so that a window has this title: an empty one would become the program's name,
/// and "[*]" would vanish.
QString literalTitle(const QString &title);
