#pragma once

#include <QFont>
#include <QList>
#include <QString>
#include <QTextLayout>

/// A text, and how parts of it are drawn.
struct styledText {
    QString text;
    QList<QTextLayout::FormatRange> formats;
};

/// What `markup` says: b, i, u, s, tt, small, big, sub, sup, span with the attributes of its font and its
/// colours, and a, of which the text alone is shown. Nothing that it names is opened or loaded. What is not
/// well-formed, or has other tags, is a text as it stands. Sizes are relative to `font`.
styledText fromMarkup(const QString &markup, const QFont &font);
