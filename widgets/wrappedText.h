#pragma once

#include <QFont>
#include <QStringList>

class QWidget;

/// `text` as lines of at most `width` pixels: broken at line feeds, at blanks, and where there are none
/// within a word. What does not fit into `maxLines` is elided at the end of the last.
QStringList wrappedText(const QString &text, const QFont &font, int width, int maxLines);

/// `text` with an invisible place to break a line in each word that is wider than `width` pixels, so that no
/// part of it is.
QString withBreaks(const QString &text, const QFont &font, int width);

/// The direction that a text is read in, its lines and an ellipsis in them included.
Qt::LayoutDirection directionOf(const QString &text);

/// Pixels that the widest line of `text` needs in the widget's font: on a screen twice as dense twice as
/// many, although letters are fitted to whole pixels. With `Qt::TextShowMnemonic` in `flags`, "&" takes no
/// room.
int textWidth(const QString &text, const QWidget &widget, int flags = 0);

/// What a tool tip shows as `text`: no markup, in lines of a length that screens have.
QString toolTipText(const QString &text);
