#pragma once

#include "widgets/motifStyle.h"

/// The style of every bar: the label is drawn in the HighlightedText colour over the filled part and in the
/// Text colour over the rest, and changes colour at the edge of a whole chunk. Give each window's bars a
/// style that the window owns.
class progressStyle : public motifStyle
{
    Q_OBJECT

public:
    /// Draws CE_ProgressBarLabel itself; a bar without a range or with hidden text gets no label.
    void drawControl(ControlElement element, const QStyleOption *opt, QPainter *p,
                     const QWidget *widget = nullptr) const override;
};
