#pragma once

#include <QPushButton>

/// A button of the progress dialog. It paints itself without the widget style: a rounded body with a
/// vertical gradient inside a rounded frame whose colour shows the keyboard focus. It hands its events to
/// its parent's event filter first.
///
/// All buttons share one set of outlines and one gradient, built for the size that was painted last. A
/// change of the gradient's colours therefore shows when a button of another size is painted.
class progressButton : public QPushButton
{
    Q_OBJECT

public:
    explicit progressButton(QWidget *parent);
    /// Lets new colours reach the shared gradient at the next painting.
    static void forgetColors();

protected:
    /// Paints the whole button whatever the event's region is.
    void paintEvent(QPaintEvent *event) override;
};
