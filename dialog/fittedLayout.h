#pragma once

#include "dialog/dialogLayout.h"
#include "dialog/fittedChildren.h"
#include "dialog/fittedPanel.h"
#include "dialog/fittedWindow.h"

class QLabel;

/// As large as the content asks for: rows of their natural height, buttons of their natural width, a total
/// row for several bars. All distances are made of the font of text lines; where the screen is too small for
/// the content, texts scroll, and then everything is made smaller. What it does is shared between its
/// children, its window, the panel that they stand on, and fittedArrangement.h, which knows the places.
class fittedLayout : public dialogLayout
{
public:
    fittedLayout(QWidget &window, dialogSlots &content);

    void movePosition() override { m_frame.movePosition(); }
    void takeMoved() override { m_frame.takeMoved(); }
    void takeResized() override;
    void copyFrom(const dialogLayout &src) override;
    void dropImages() override { m_panel.dropImages(); }
    void takeColors() override;
    void place(bool runs) override;
    void placeAgain() override;
    void takeText(int id) override;
    void paint(const QPaintEvent &event) override { m_panel.paint(event); }
    bool takesDesktopKeys() const override { return true; }
    bool scroll(int key) override { return m_children.scroll(key); }
    void captionTotalBar() override { showLeft({}); }
    void showRemaining(const remainingTime &remaining) override;
    void hideTotalBar() override { showLeft({}); }

private:
    struct plan;

    void showLeft(const QString &left);
    plan planned(const QSize &room, bool isGiven);
    plan plannedAt(double scale, const QSize &room, bool isGiven);
    void carryOut(const plan &wanted);

    fittedWindow m_frame;
    fittedPanel m_panel;
    fittedChildren m_children;
    /// Beside the rows; null for none.
    QLabel *m_picture = nullptr;
};
