#include "server/receiver.h"

#include "app/dump.h"
#include "dialog/CProgressDialog.h"
#include "stats/statisticsFile.h"
#include "widgets/busyWidget.h"

#include <QApplication>

#include <utility>

namespace
{

/// Gives the window the keyboard. One that was hidden and is shown again before the display has taken the
/// keyboard away counts as inactive for the toolkit, which then hears of no change and would never mark the
/// focused button.
void takeKeyboard(QWidget *window)
{
    window->activateWindow();
    if (!window->isActiveWindow() && window->windowHandle() == QGuiApplication::focusWindow())
        QApplication::setActiveWindow(window);
}

} // namespace

void receiver::BringWindowToFront()
{
    if (!m_modal_dialog)
        replaceDialog();
    m_progress->setAttribute(Qt::WA_ShowWithoutActivating, boxIsOpen());
    m_progress->show();
    m_progress->raise();
    if (boxIsOpen())
        keepBoxesInFront();
    else
        takeKeyboard(m_progress);
}

void receiver::replaceDialog()
{
    auto *fresh = new CProgressDialog;
    fresh->copyFromDialog(*m_progress);
    dump("---- queueing dialog for delete", dumpIdentity(m_progress));
    queueForDeletion(m_progress);
    m_progress = fresh;
}

void receiver::queueForDeletion(CProgressDialog *dialog)
{
    if (m_deletingCount == static_cast<int>(m_deleting.size()))
        dialog->deleteLater();
    else
        m_deleting[static_cast<size_t>(m_deletingCount++)] = dialog;
}

void receiver::drainDeletionQueue()
{
    while (m_deletingCount > 0)
        m_deleting[static_cast<size_t>(--m_deletingCount)]->deleteLater();
}

void receiver::activate()
{
    if (m_windowIsActive)
        BringWindowToFront();
}

void receiver::toggle()
{
    if (boxIsOpen())
        return;
    if (m_progress->isVisible())
        m_progress->hide();
    else
        activate();
}

void receiver::progressVisibilityChanged(bool isVisible)
{
    if (isVisible) {
        sendEvent(QStringLiteral("isShown"));
        if (!m_busyActive && busyWidget::hasPosition()) {
            m_splash->movePosition();
            m_splash->show();
        }
        m_windowIsActive = true;
        BringWindowToFront();
    } else {
        sendEvent(QStringLiteral("isHidden"));
        m_splash->setBusyPercent(-1);
        if (!m_busyActive)
            m_splash->hide();
        m_windowIsActive = false;
        m_progress->hide();
    }
}

void receiver::cleanup()
{
    dismissBoxes();
    sendEvent(QStringLiteral("shutDown"));
    delete std::exchange(m_progress, nullptr);
    delete std::exchange(m_splash, nullptr);
    // Queued dialogs end with the process, but the toolkit wants them gone before the application object.
    while (m_deletingCount > 0)
        delete m_deleting[static_cast<size_t>(--m_deletingCount)];
}

void receiver::loadStatisticData(const char *file)
{
    loadStatistics(file);
}

void receiver::saveStatisticData(const char *file)
{
    saveStatistics(file);
}
