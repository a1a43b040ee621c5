#pragma once

#include "server/activeDialog.h"
#include "server/eventListeners.h"
#include "server/message.h"
#include "server/noticeBoxes.h"
#include "server/progressCommand.h"
#include "server/windowOrder.h"

#include <bitset>

/// What every message ends in, whichever way it came: the windows that it acts on and the listeners who hear
/// of it. It outlives both servers and all channels.
class handlers
{
public:
    handlers();
    Q_DISABLE_COPY_MOVE(handlers)

    /// Carries out a message that is not between a client and its server alone. `asker` stands for the client
    /// where a box is to be answered; when `waiting` is deleted, if it is given, the box is taken away.
    void handle(const message &received, dialect from, const askerFunction &asker,
                const QObject *waiting = nullptr);
    /// Reserves the lowest slot that shows neither row nor button and that nobody has claimed; -1 when there
    /// is none. Who has reserved one gives it up.
    int claim();
    /// Gives a claimed slot up, and removes what stands in it.
    void release(int slot);
    /// The orderly end, after the event loop: answers open boxes, says "shutDown", deletes the windows.
    void cleanup();

    eventListeners m_listeners;
    windowOrder m_order;
    activeDialog m_active;
    noticeBoxes m_boxes;

private:
    void doProgress(const progressCommand &command);
    /// Applies the entries of a configuration message.
    void doConfiguration(const QString &description);

    std::bitset<wire::slotCount> m_claimed;
};
