#pragma once

#include "dialog/dialogLayout.h"
#include "dialog/fittedArrangement.h"
#include "dialog/fittedPanel.h"

#include <QPoint>
#include <QSize>
#include <QString>

class QLabel;
class fittedBar;
class fittedLabel;

/// As large as the content asks for: rows of their natural height, buttons of their natural width, a total
/// row for several bars. It only grows while there is content. In the modal mode the window is frameless with
/// rounded corners, else the window manager's own, which the user can make larger. It grows around its
/// centre, and moves as far as the screen's work area asks for. All distances are made of the font of text
/// lines; where the screen is too small for the content, texts scroll, and then everything is made smaller.
///
/// Sources: fittedLayout.cpp (children), fittedPlacement.cpp (the window and the places in it).
class fittedLayout : public dialogLayout
{
public:
    fittedLayout(QWidget &window, dialogSlots &content);

    void fixSize() override;
    void movePosition() override;
    void takeMoved() override;
    void takeResized() override;
    void loadBackground() override;
    void reloadPixmap() override;
    void copyFrom(const dialogLayout &src) override;
    void dropImages() override { m_panel.dropImages(); }
    void takeColors() override;
    void place(bool runs) override;
    void placeAgain() override;
    void takeText(int id) override;
    void paint(const QPaintEvent &event) override { m_panel.paint(event); }
    /// The settings' image may be the name of an icon; without any, the program's own.
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
    struct plan;

    fittedBar &bar(int id) const;
    fittedLabel &label(int id) const;
    fittedBar &totalBar() const;
    bool isManaged() const;
    int shownBars() const;
    bool showsTotalRow() const;
    void showChildren();
    void tellRemaining();
    void showEstimate();
    QList<QWidget *> shownRows() const;
    QList<QWidget *> shownButtons(int group) const;
    int groupBelow(int id) const;

    QSize roomOnScreen() const;
    void useFonts(double scale);
    int windowWidth(int natural, int grown, const QSize &room) const;
    plan planned(const QSize &room, bool isGiven);
    plan plannedAt(double scale, const QSize &room, bool isGiven);
    std::vector<fittedNeeds::row> rowsAt(int width);
    void carryOut(const plan &wanted);
    void growTo(const QSize &size, const QRect &before);

    fittedPanel m_panel;
    /// Beside the rows; null for none.
    QLabel *m_picture = nullptr;
    /// The time that is left, as text; empty while there is no estimate.
    QString m_left;
    bool m_estimateIsShown = false;
    /// Size of the window so far, by the content or the user; empty while there is no content.
    QSize m_grown;
    /// Of the last plan that was carried out: any other is the user's or the window manager's.
    QSize m_arrangedSize;
    /// Height that each text line has taken so far, in lines.
    double m_grownLines[dialogSlots::MAX_ENTRIES] = {};
    /// The centre of a frameless window, where it was put; the screen's work area may keep it elsewhere.
    /// (What the window itself tells is behind the times while a move is under way.)
    QPoint m_anchor;
    bool m_wasMoved = false; ///< by the user
};
