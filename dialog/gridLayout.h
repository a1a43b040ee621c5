#pragma once

#include "dialog/dialogLayout.h"
#include "widgets/progressStyle.h"

#include <QColor>
#include <QPixmap>
#include <QRegion>

/// The fixed grid of equal cells: a frameless window whose size is made of the configured screen's and one
/// font's, never changed, with ten rows for text lines and bars, one of which the total bar shares with the
/// "Hide" button, and two for buttons. On a low screen there are five rows, two buttons and one row for them.
class gridLayout : public dialogLayout
{
public:
    gridLayout(QWidget &window, dialogSlots &content);

    void movePosition() override;
    void copyFrom(const dialogLayout &src) override;
    void dropImages() override { m_bgpixmap = {}; }
    void place(bool runs) override;
    void takeColors() override;
    void paint(const QPaintEvent &event) override;
    void captionTotalBar() override;
    void showRemaining(const remainingTime &remaining) override;
    void hideTotalBar() override;

private:
    struct figures;

    void chooseScreenProfile();
    void fixSize();
    void colorLabel(progressLabel &label) const;
    int placeHideButton(const figures &grid);
    void placeRows(const figures &grid);
    void placeButtons(const figures &grid);
    int buttonCellWidth(const figures &grid, int nbut) const;

    /// Given to every bar.
    progressStyle m_style;
    /// The background image at the dialog's size, or null.
    QPixmap m_bgpixmap;

    QSize m_desktop; ///< the configured screen
    QColor m_frameColor;
    QColor m_backgroundColor;
    /// Opacity of the background, 0 to 255.
    int m_alphaValue;
    int m_margin = 4; ///< inside the frame
    int m_ygap = 6;   ///< between rows
    int m_buttonRows = 2;
    QSize m_size; ///< of the window
};

/// The region of `g` with its corners rounded by circles of radius `r` pixels, `r` 1 or more. As the dialog's
/// look has always been it is a pixel short at the right and at the bottom: the toolkit's circles leave out
/// their last column and row.
QRegion roundRectRegion(const QRect &g, int r);
