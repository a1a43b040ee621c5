#pragma once

#include "widgets/progressLabel.h"

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
};
