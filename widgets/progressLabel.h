#pragma once

#include "widgets/texts.h"

#include <QLabel>

/// A caption or a text line of the progress dialog. The text is shown as it came, never as markup.
class progressLabel : public QLabel
{
    Q_OBJECT

public:
    explicit progressLabel(QWidget *parent);
};

/// A text line of the fitted layout: it wraps to three lines at most, and is elided behind them; the tool tip
/// then shows all of it.
class fittedLabel : public progressLabel
{
    Q_OBJECT

public:
    explicit fittedLabel(QWidget *parent);

    /// For the text without wrapping.
    QSize sizeHint() const override;
    /// Lines, 1 to 3, that the text takes at this width.
    int linesFor(int width) const;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    const QStringList &lines(int width) const;

    mutable measuredText m_measured;
    /// The text as it was wrapped last, and what for.
    mutable QStringList m_lines;
    mutable int m_wrappedWidth = -1;
    mutable QString m_wrappedText;
    mutable QFont m_wrappedFont;
};
