#pragma once

/// What a dialog needs of the daemon around it. Not owned; it outlives its dialogs. A call may replace the
/// dialog that makes it by a copy; the caller then stays alive until its operation has returned.
class dialogHost
{
public:
    /// The dialog's content went from nothing to something, or back.
    virtual void progressVisibilityChanged(bool isVisible) = 0;
    /// A run begins, or has ended: all that the dialog shows is finished, or gone.
    virtual void runChanged(bool isRunning) = 0;
    /// Publishes the total percent and the remaining time in seconds, -1 for unknown.
    virtual void updateTotalPercent(int currentPercent, int remainingSeconds) = 0;
    /// The user pressed the button of a slot, 0 to 9.
    virtual void clicked(int slot) = 0;
    /// The user has closed the window, which hides it.
    virtual void closed() = 0;
    /// Keys and mouse buttons are not for the dialog now, since a box waits for its answer.
    virtual bool isInputBlocked() const = 0;

protected:
    ~dialogHost() = default;
};
