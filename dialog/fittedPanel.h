#pragma once

#include <QPixmap>

class QPaintEvent;
class QWidget;

/// What a fitted dialog's children stand on: the window's palette, its background, and where it is frameless
/// its outline with rounded corners. Knows the window (not owned) only as something to paint.
class fittedPanel
{
public:
    /// Has the settings' background.
    fittedPanel(QWidget &window, bool isFrameless);

    /// Gives the window the settings' colours.
    void takeColors();
    /// Shares the background of another one.
    void takeBackground(const fittedPanel &src) { m_image = src.m_image; }
    void dropImages();
    /// The window may have another size, or the length of its em, in pixels.
    void takeSize(double em);
    void paint(const QPaintEvent &event);

private:
    void paintFrameless(const QRect &dirty) const;

    QWidget &m_window;
    bool m_isFrameless;
    double m_em = 0;
    QSize m_size;
    /// The background image as it was loaded, and at the window's size.
    QPixmap m_image;
    QPixmap m_scaledImage;
};
