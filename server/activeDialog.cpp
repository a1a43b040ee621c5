#include "server/activeDialog.h"

#include "dialog/CProgressDialog.h"
#include "log/dump.h"
#include "server/eventListeners.h"
#include "server/windowOrder.h"
#include "widgets/appearance.h"
#include "widgets/busyWidget.h"

#include <utility>

using wire::eventKind;

activeDialog::activeDialog(eventListeners &listeners, windowOrder &order)
    : m_listeners(listeners), m_order(order)
{
}

void activeDialog::createWindows()
{
    if (m_progress)
        return;
    m_splash = new busyWidget;
    QObject::connect(m_splash, &busyWidget::pressed, m_splash, [this] { toggle(); });
    m_progress = new CProgressDialog(*this);
}

bool activeDialog::isShown() const
{
    return m_progress && (m_frontPending || m_progress->isVisible());
}

void activeDialog::bringToFront()
{
    if (appearance.m_modal_dialog) {
        showInFront();
        return;
    }
    replaceDialog();
    const auto showPending = [this] {
        if (m_frontPending)
            showInFront();
    };
    if (!std::exchange(m_frontPending, true))
        QMetaObject::invokeMethod(m_splash, showPending, Qt::QueuedConnection);
}

void activeDialog::showInFront()
{
    m_frontPending = false;
    m_order.bringToFront(m_progress, std::exchange(m_frontIsAsked, false) || m_progress->takesKeyboard());
    m_taskbar.follow(m_progress);
    m_endNotice.showAgain();
}

void activeDialog::hideDialog()
{
    m_frontPending = m_frontIsAsked = false;
    m_progress->hide();
}

void activeDialog::replaceDialog()
{
    auto *fresh = new CProgressDialog(*this);
    fresh->copyFromDialog(*m_progress);
    dump("---- queueing dialog for delete", dumpIdentity(m_progress));
    if (m_frontPending)
        m_progress->countAsOpen();
    // Clicks on the busy window queue one each, and only messages drain the queue.
    constexpr size_t mostQueued = 32;
    if (m_deleting.size() < mostQueued)
        m_deleting.push_back(m_progress);
    else
        m_progress->deleteLater();
    m_progress = fresh;
}

/// The dialogs are deleted when control is back in the event loop; a burst of replacements must not pile up
/// what they hold until then. The one that is on the screen stays there until its copy is.
void activeDialog::drainDeletionQueue()
{
    for (; !m_deleting.empty(); m_deleting.pop_back()) {
        CProgressDialog *dialog = m_deleting.back();
        if (!dialog->isVisible())
            dialog->giveBack();
        dialog->deleteLater();
    }
}

void activeDialog::activate()
{
    if (!m_windowIsActive)
        return;
    m_frontIsAsked = true;
    bringToFront();
}

void activeDialog::toggle()
{
    if (isInputBlocked())
        return;
    if (isShown())
        hideDialog();
    else
        activate();
}

void activeDialog::messageStart()
{
    m_progress->willCancel();
    m_endNotice.hide(*m_progress);
    hideDialog();
}

void activeDialog::messageStop()
{
    m_progress->willCancel();
    if (m_windowIsActive && !isShown())
        bringToFront();
}

void activeDialog::busyOn()
{
    m_busyActive = true;
    showBusyWindow();
}

void activeDialog::busyOff()
{
    if (!m_windowIsActive)
        m_splash->hide();
    m_busyActive = false;
}

void activeDialog::showBusyWindow()
{
    // In the middle of the screen it would lie on the dialog.
    if (!busyWidget::hasPosition() && (!busyWidget::isCentred() || !m_busyActive || m_windowIsActive))
        return;
    m_splash->movePosition();
    m_splash->show();
    m_order.keepBelowBoxes();
}

void activeDialog::cancelRun()
{
    if (m_progress)
        m_progress->willCancel();
}

void activeDialog::clearSlot(int slot)
{
    if (!m_progress || m_progress->isFree(slot))
        return;
    // Whoever leaves content behind has given its run up, unless the bars were full.
    if (m_progress->giveUpRun())
        m_endNotice.giveUp();
    m_progress->removeBar(slot);
    m_progress->removeButton(slot);
    drainDeletionQueue();
}

void activeDialog::progressVisibilityChanged(bool isVisible)
{
    m_listeners.send(isVisible ? eventKind::isShown : eventKind::isHidden);
    m_windowIsActive = isVisible;
    if (isVisible) {
        if (busyWidget::isCentred())
            m_splash->hide();
        else if (!m_busyActive)
            showBusyWindow();
        m_taskbar.setPercent(0);
        bringToFront();
    } else {
        m_taskbar.setPercent(-1);
        m_splash->setBusyPercent(-1);
        if (!m_busyActive)
            m_splash->hide();
        hideDialog();
        if (m_busyActive && busyWidget::isCentred())
            showBusyWindow();
    }
}

void activeDialog::runChanged(bool isRunning)
{
    if (isRunning)
        m_endNotice.begin();
    else
        m_endNotice.end(*m_progress);
}

void activeDialog::updateTotalPercent(int currentPercent, int remainingSeconds)
{
    if (m_windowIsActive) {
        m_splash->setBusyPercent(currentPercent);
        m_taskbar.setPercent(currentPercent);
    }
    m_listeners.send(eventKind::totalProgress, {currentPercent, remainingSeconds});
}

void activeDialog::clicked(int slot)
{
    m_listeners.send(eventKind::clicked, {slot});
}

void activeDialog::closed()
{
    m_listeners.sendLocal(eventKind::closed);
}

bool activeDialog::isInputBlocked() const
{
    return m_order.boxIsOpen();
}

void activeDialog::clear()
{
    m_taskbar.clear();
    if (m_frontPending)
        m_progress->countAsOpen();
    delete std::exchange(m_progress, nullptr);
    delete std::exchange(m_splash, nullptr);
    // Queued dialogs would end with the process, but the toolkit wants them gone before the application.
    for (; !m_deleting.empty(); m_deleting.pop_back())
        delete m_deleting.back();
}
