#pragma once

#include "dialog/dialogSlots.h"

#include <QString>

class QPaintEvent;
class QWidget;
struct remainingTime;

/// What differs between the looks of a dialog: how its window is set up, which children it has, where they
/// are, and how the panel is painted. The dialog asks its layout; the layout knows the dialog only as a
/// window and its slots (neither is owned, both outlive it). When it is made, it creates the children, gives
/// the window its first size and its icon, and loads the settings' background image.
class dialogLayout
{
public:
    virtual ~dialogLayout() = default;

    /// Places the window on the screen.
    virtual void movePosition() = 0;
    /// The user has moved the window.
    virtual void takeMoved() {}
    /// So has the size, or the layout itself.
    virtual void takeResized() {}
    /// Takes over from the layout of the dialog that is being copied what this one can use of it.
    virtual void copyFrom(const dialogLayout &src) = 0;
    /// Gives the background images back.
    virtual void dropImages() = 0;

    /// Places, shows and hides the children as the slots' flags say. `runs`: a run is timed, whose remaining
    /// time may stand on the total bar.
    virtual void place(bool runs) = 0;
    /// The same as before, after a child has changed what it asks for.
    virtual void placeAgain() {}
    /// A row's text is another one. The grid's bars show it when they are placed again.
    virtual void takeText(int /*id*/) {}
    /// Takes the settings' colours anew.
    virtual void takeColors();
    virtual void paint(const QPaintEvent &event) = 0;
    /// Whether keys do what they do in other windows of the desktop: Escape closes, Space presses.
    virtual bool takesDesktopKeys() const { return false; }
    /// Turns the pages of texts that scroll: Page Up, Page Down, Home and End. False where the key does not.
    virtual bool scroll(int /*key*/) { return false; }

    /// The caption of the total bar while no remaining time is known.
    virtual void captionTotalBar() = 0;
    /// Shows the total bar, too.
    virtual void showRemaining(const remainingTime &remaining) = 0;
    virtual void hideTotalBar() = 0;

protected:
    dialogLayout(QWidget &window, dialogSlots &content) : m_window(window), m_content(content) {}
    Q_DISABLE_COPY_MOVE(dialogLayout)

    /// Creates every child that the dialog will ever have.
    template <class Label, class Bar, class Button> void createWidgets();
    /// Rebuilds `BAR_PALETTE` and gives it to the total bar.
    void shareBarPalette();

    QWidget &m_window;
    dialogSlots &m_content;
};

template <class Label, class Bar, class Button> void dialogLayout::createWidgets()
{
    auto *totalLabel = new Label(&m_window);
    totalLabel->setText(QStringLiteral("total progress"));
    auto *totalBar = new Bar(&m_window);
    totalBar->setValue(0);
    auto *hideButton = new Button(&m_window);
    hideButton->setText(QStringLiteral("Hide"));
    m_content.m_totalLabel = totalLabel;
    m_content.m_totalBar = totalBar;
    m_content.m_hideButton = hideButton;
    for (int i = 0; i < m_content.maxBars; ++i) {
        m_content.labels[i] = new Label(&m_window);
        m_content.bars[i] = new Bar(&m_window);
    }
    for (int i = 0; i < m_content.maxButtons; ++i)
        m_content.buttons[i] = new Button(&m_window);
}
