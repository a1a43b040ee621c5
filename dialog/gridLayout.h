#pragma once

#include "dialog/dialogLayout.h"

#include <QColor>
#include <QPixmap>
#include <QRegion>

#include <memory>

class progressStyle;

/// The fixed grid of equal cells: a frameless window whose size is made of the configured screen's and one
/// font's, never changed, with ten rows for text lines and bars, one of which the total bar shares with the
/// "Hide" button, and two for buttons. On a low screen there are five rows, two buttons and one row for them.
///
/// Sources: gridLayout.cpp (construction, placement), gridPainting.cpp.
class gridLayout : public dialogLayout
{
public:
    gridLayout(QWidget &window, dialogSlots &content);
    ~gridLayout() override;

    void fixSize() override;
    void movePosition() override;
    void loadBackground() override;
    void reloadPixmap() override;
    void copyFrom(const dialogLayout &src) override;
    void dropImages() override;
    void place(bool runs) override;
    void takeColors() override;
    void paint(const QPaintEvent &event) override;
    void captionTotalBar() override;
    void showRemaining(const remainingTime &remaining) override;
    void showTotalBar(bool shown) override;

protected:
    progressLabel *newLabel() override;
    progressProcess *newBar() override;
    progressButton *newButton() override;

private:
    struct figures;

    void chooseScreenProfile();
    void colorLabel(progressLabel &label) const;
    int placeHideButton(const figures &grid);
    void placeTotalBar(const figures &grid, int hidew);
    void placeRows(const figures &grid);
    void placeButtons(const figures &grid);
    int buttonCellWidth(const figures &grid, int nbut) const;

    void setBackgroundPixmap(const QPixmap &newpixmap);
    void scalePixmap(const QPixmap &newpixmap);

    /// Given to every bar.
    std::unique_ptr<progressStyle> m_style;
    /// The background image at the dialog's size, or null.
    std::unique_ptr<QPixmap> m_bgpixmap;

    int m_desktopWidth;
    int m_desktopHeight;
    int m_framewidth = 4;
    QColor m_frameColor;
    QColor m_backgroundColor;
    /// Opacity of the background, 0 to 255.
    int m_alphaValue;
    int m_margin = 4;
    int m_xgap = 6;
    int m_ygap = 6;
    int m_buttonRows = 2;
    int m_Height = 0;
    int m_Width = 0;
};

/// The region of `g` with its corners rounded by circles of radius `r` pixels, `r` 1 or more. It is put
/// together as the dialog's look has always been: the toolkit's regions of polygons and ellipses leave out
/// their last column and row, so the shape is a pixel short at the right and at the bottom.
QRegion roundRectRegion(const QRect &g, int r);
