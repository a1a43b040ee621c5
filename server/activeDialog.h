#pragma once

#include "dialog/dialogHost.h"
#include "platform/taskbarEntry.h"
#include "server/endNotice.h"

#include <QtGlobal>

#include <vector>

class CProgressDialog;
class busyWidget;
class eventListeners;
class windowOrder;

/// The one active progress dialog and the busy window: their creation, the dialog's replacement by a copy,
/// and which of the two is shown. Both windows are owned, and made by the first progress message.
class activeDialog : public dialogHost
{
public:
    activeDialog(eventListeners &listeners, windowOrder &order);
    Q_DISABLE_COPY_MOVE(activeDialog)

    /// The first call brings the dialog and the busy window into being, both hidden.
    void createWindows();
    /// Null before `createWindows()`.
    CProgressDialog *dialog() const { return m_progress; }
    /// Whether the dialog is on the screen, or about to be.
    bool isShown() const;
    busyWidget *busyWindow() const { return m_splash; }

    /// Brings the dialog to the front if it has content.
    void activate();
    /// The run is not worth learning; the dialog is hidden until `messageStop()`.
    void messageStart();
    void messageStop();
    /// Shows the busy window by itself, whether or not a dialog is active.
    void busyOn();
    void busyOff();
    /// The user's time in front of a box is not the run's: such a run is not learned.
    void cancelRun();
    /// Removes the row and the button of a slot, if they are shown.
    void clearSlot(int slot);
    endNotice &noticeOfEnd() { return m_endNotice; }
    /// Whether a box waits for the user.
    void setUrgent(bool isUrgent) { m_taskbar.setUrgent(isUrgent); }

    /// Replaced dialogs may be in the middle of an operation; this is called when none is.
    void drainDeletionQueue();
    /// Deletes all windows.
    void clear();

    void progressVisibilityChanged(bool isVisible) override;
    void runChanged(bool isRunning) override;
    void updateTotalPercent(int currentPercent, int remainingSeconds) override;
    void clicked(int slot) override;
    void closed() override;
    bool isInputBlocked() const override;

private:
    /// Shows the dialog in front of the other windows, in the non-modal mode as a fresh copy.
    void bringToFront();
    /// Hides the dialog, or brings it back if it has content.
    void toggle();
    void showBusyWindow();
    void hideDialog();
    void showInFront();
    void replaceDialog();

    eventListeners &m_listeners;
    windowOrder &m_order;
    CProgressDialog *m_progress = nullptr;
    busyWidget *m_splash = nullptr;
    /// The active dialog has content (it may be hidden all the same).
    bool m_windowIsActive = false;
    bool m_busyActive = false;
    /// The dialog, a fresh copy, is to be shown once the messages at hand have been handled: a burst of
    /// replacements needs one window, not one each.
    bool m_frontPending = false;
    /// Until it is shown: the user, or a client for him, has asked for it, so that it gets the keyboard.
    bool m_frontIsAsked = false;
    taskbarEntry m_taskbar;
    endNotice m_endNotice;
    std::vector<CProgressDialog *> m_deleting;
};
