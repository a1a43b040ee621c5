#pragma once

#include "server/activeDialog.h"
#include "server/eventListeners.h"
#include "server/message.h"
#include "server/noticeBoxes.h"
#include "server/progressCommand.h"
#include "server/windowOrder.h"

/// What every message ends in, whichever way it came: the windows that it acts on and the listeners who hear
/// of it. There is one in the process, which outlives both servers and all channels.
class handlers
{
public:
    handlers();
    ~handlers();
    Q_DISABLE_COPY_MOVE(handlers)

    /// The one; it exists as long as messages are handled.
    static handlers &instance() { return *s_instance; }

    /// Carries out a message that is not between a client and its server alone. `asker` stands for the client
    /// where a box is to be answered.
    void handle(const message &received, dialect from, const askerFunction &asker);
    /// Carries out one progress command, its replaced dialogs included.
    void doProgress(const progressCommand &command);
    /// Applies the entries of a configuration message.
    void doConfiguration(const QString &description);
    /// The orderly end, after the event loop: answers open boxes, says "shutDown", deletes the windows.
    void cleanup();

    eventListeners m_listeners;
    windowOrder m_order;
    activeDialog m_active;
    noticeBoxes m_boxes;

private:
    static handlers *s_instance;
};
