#pragma once

#include <QCommonStyle>

/// The style of every bar, with the classic Motif look: a sunken panel two pixels wide that is not filled,
/// and inside it a plain rectangle of the Highlight colour. What lies between them is the widget's own
/// background. The label is drawn in the HighlightedText colour over the filled part and in the Text colour
/// over the rest; a bar without a range or with hidden text gets none. Every other element looks as in the
/// common style. Give each window's bars a style that the window owns.
class progressStyle : public QCommonStyle
{
public:
    void drawControl(ControlElement element, const QStyleOption *opt, QPainter *p,
                     const QWidget *widget = nullptr) const override;
    /// Groove and label take the whole bar, the contents lie inside the panel.
    QRect subElementRect(SubElement element, const QStyleOption *opt,
                         const QWidget *widget = nullptr) const override;
};
