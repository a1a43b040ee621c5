#pragma once

#include "dialog/dialogInput.h"
#include "dialog/dialogRun.h"
#include "dialog/dialogSlots.h"

#include <QWidget>

#include <memory>

class dialogHost;
class dialogLayout;

/// The progress dialog: a window with ten slots for a text line or a bar, up to ten buttons, a total bar and
/// a "Hide" button. Its host fills it, shows and hides it, and replaces it by a copy; its layout says what
/// it looks like.
///
/// The layout pass `ensureVisible()` derives what is seen from the slots' flags (dialogSlots). Slot indices
/// run from 0 to 9; an index outside them, or a slot without widgets on a low screen, has no effect. Lengths
/// are screen pixels.
class CProgressDialog : public QWidget, private dialogSlots
{
    Q_OBJECT

public:
    using dialogSlots::MAX_ENTRIES;

    /// Built hidden, from the appearance settings.
    explicit CProgressDialog(dialogHost &host);
    ~CProgressDialog() override;

    void createBar(int id, const QString &text);
    void removeBar(int id);
    void createText(int id, const QString &text);
    /// A bar of the slot shows the new text only after the next layout pass.
    void updateText(int id, const QString &text);
    void removeText(int id) { removeBar(id); }
    void addButton(int id, const QString &text);
    void removeButton(int id);
    /// Sets a bar to `percent`, 0 to 100; -1 stands for a bar that would be cancelled and shows 100.
    void updateBar(int id, int percent);
    /// What stands in the slot stays, without being a part of the run: that ends, and is learned, when
    /// nothing else is left. What is put into the slot later is a part again.
    void finishSlot(int id);
    void joinSlot(int id, int leaderId);
    /// The bar of the slot moves to and fro without a percent until its next update; it counts as it stood.
    void pulseBar(int id);

    /// Whether the slot, 0 to 9, shows neither a row nor a button.
    bool isFree(int id) const { return !showsAny(id); }

    /// Whether it has the keyboard whenever it appears, not only when somebody asks for it.
    bool takesKeyboard() const;
    /// The run in progress will not be recorded.
    void willCancel() { m_run.willCancel(); }
    /// The same, unless all bars are full; tells whether they are not.
    bool giveUpRun() { return m_run.giveUp(); }
    /// Makes this dialog, just constructed, a copy of `src`; the run goes on in the copy.
    void copyFromDialog(const CProgressDialog &src);
    /// Centres the dialog on the screen.
    void movePosition();
    /// For a dialog that has been replaced, is in no operation and will not be shown again: what it holds
    /// goes at once, its window, images and children.
    void giveBack();
    /// The dialog was to be shown and goes before it could be: its end is logged like a shown one's.
    void countAsOpen() { m_countsAsOpen = true; }

protected:
    bool eventFilter(QObject *obj, QEvent *ev) override;
    void paintEvent(QPaintEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void takeColors();
    void relayout();
    void ensureVisible();
    void placeChildren();
    void copySlot(int id, const CProgressDialog &src);

    dialogHost &m_host;
    /// Goes before the children: it owns what they are painted with.
    std::unique_ptr<dialogLayout> m_layout;
    dialogRun m_run;
    dialogInput m_input;

    /// The dialog had content at the end of the last layout pass.
    bool m_isActive = false;
    bool m_countsAsOpen = false;
};
