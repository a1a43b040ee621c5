#pragma once

#include <QCommonStyle>

/// The parts of the classic Motif look that progress bars need: a sunken panel two pixels wide that is not
/// filled, and inside it a plain rectangle of the Highlight colour. What lies between them is the widget's
/// own background. Every other element looks as in the common style.
class motifStyle : public QCommonStyle
{
    Q_OBJECT

public:
    void drawControl(ControlElement element, const QStyleOption *opt, QPainter *p,
                     const QWidget *widget = nullptr) const override;
    /// Groove and label take the whole bar, the contents lie inside the panel.
    QRect subElementRect(SubElement element, const QStyleOption *opt,
                         const QWidget *widget = nullptr) const override;
    /// The chunk of a progress bar is one pixel wide.
    int pixelMetric(PixelMetric metric, const QStyleOption *opt = nullptr,
                    const QWidget *widget = nullptr) const override;
};
