#pragma once

#include <QFont>
#include <QStringList>

/// `text` as lines of at most `width` pixels: broken at line feeds, at blanks, and where there are none
/// within a word. What does not fit into `maxLines` is elided at the end of the last.
QStringList wrappedText(const QString &text, const QFont &font, int width, int maxLines);

/// What a tool tip shows as `text`: no markup, in lines of a length that screens have.
QString toolTipText(const QString &text);
