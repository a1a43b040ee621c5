#pragma once

#include <QFont>
#include <QWidget>

/// Lengths in em of a font, as pixels of the screen that `device` is on: a screen twice as dense shows the
/// same picture twice as large.
class emLength
{
public:
    emLength(const QFont &font, const QWidget &device)
        : m_pixels(font.pointSizeF() > 0 ? font.pointSizeF() * device.logicalDpiY() / pointsAnInch
                                         : font.pixelSize())
    {
    }
    /// In em of the widget's own font.
    explicit emLength(const QWidget &widget) : emLength(widget.font(), widget) {}

    int operator()(double ems) const { return qRound(ems * m_pixels); }
    double exact(double ems) const { return ems * m_pixels; }

private:
    static constexpr double pointsAnInch = 72;
    double m_pixels;
};
