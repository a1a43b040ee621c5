#pragma once

#include "dialog/dialogLayout.h"

#include <QPixmap>
#include <QPoint>
#include <QSize>
#include <QString>

#include <vector>

class fittedBar;
class fittedButton;
class fittedLabel;

/// As large as the content asks for: rows of their natural height, buttons of their natural width, a total
/// row only when there is something to tell in it. The width only grows while there is content. In the modal
/// mode the window is frameless with rounded corners, else the window manager's own. A frameless one grows
/// and shrinks around the middle of its top edge, and moves as far as the screen's work area asks for. All
/// distances are made of the font of text lines; where the screen is too small for the content, everything is
/// made smaller.
///
/// Sources: fittedLayout.cpp (window, children), fittedPlacement.cpp (sizes and places), fittedPanel.cpp
/// (colours and painting).
class fittedLayout : public dialogLayout
{
public:
    fittedLayout(QWidget &window, dialogSlots &content);

    void fixSize() override;
    void movePosition() override;
    void takeMoved() override;
    void loadBackground() override;
    void reloadPixmap() override;
    void copyFrom(const dialogLayout &src) override;
    void dropImages() override;
    void takeColors() override;
    void place(bool runs) override;
    void placeAgain() override;
    void takeText(int id) override;
    void paint(const QPaintEvent &event) override;
    /// The program's own, if there is no image.
    QIcon icon() const override;
    bool takesDesktopKeys() const override { return true; }
    void captionTotalBar() override;
    void showRemaining(const remainingTime &remaining) override;
    void showTotalBar(bool shown) override;

protected:
    progressLabel *newLabel() override;
    progressProcess *newBar() override;
    progressButton *newButton() override;

private:
    struct arrangement;
    struct placing;

    fittedBar &bar(int id) const;
    fittedLabel &label(int id) const;
    bool isManaged() const;
    int shownBars() const;
    bool showsTotalRow() const;
    void showChildren();
    void tellRemaining();
    void showEstimate();

    QSize roomOnScreen() const;
    void useFonts(double scale);
    arrangement arranged(double scale);
    int contentWidth(const placing &sizes) const;
    void arrangeRows(arrangement &plan, const placing &sizes);
    void arrangeButtons(arrangement &plan, const placing &sizes) const;
    void carryOut(const arrangement &plan);
    void settle();

    void usePalette();
    void paintFrameless(const QRect &dirty) const;
    void cutCorners();

    /// The time that is left, as text; empty while there is no estimate.
    QString m_left;
    bool m_estimateIsShown = false;
    /// Width in pixels of the content so far; 0 while there is none.
    int m_grownWidth = 0;
    /// Lines that each text line has taken so far.
    int m_grownLines[dialogSlots::MAX_ENTRIES] = {};
    /// The middle of the top edge of a frameless window, where it was put; the screen's work area may keep it
    /// elsewhere. (What the window itself tells is behind the times while a move is under way.)
    QPoint m_anchor;
    bool m_wasMoved = false; ///< by the user
    /// The background image as it was loaded, and at the window's size.
    QPixmap m_image;
    QPixmap m_scaledImage;
};
