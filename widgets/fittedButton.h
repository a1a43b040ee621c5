#pragma once

#include "widgets/progressButton.h"
#include "widgets/texts.h"

/// A flat button of the fitted layout, as wide as its text asks for; the pointer, a press and the focus show.
/// "&" in the text marks the letter that presses it together with Alt. Its colours are those of the window's
/// palette: Button, ButtonText, Mid for the outline and Link for the focus.
class fittedButton : public progressButton
{
    Q_OBJECT

public:
    explicit fittedButton(QWidget *parent);
    QSize sizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QColor bodyColor() const;

    mutable measuredText m_measured;
};
