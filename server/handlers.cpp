#include "server/handlers.h"

handlers::handlers() : m_active(m_listeners, m_order), m_boxes(m_active, m_order), m_claims(m_active) {}

void handlers::handle(const message &received, dialect from, const askerFunction &asker,
                      const QObject *waiting)
{
    switch (received.kind) {
    case messageKind::configuration:
        doConfiguration(decoded(received.payload, from));
        break;
    case messageKind::assertion:
        m_boxes.openAssertion(decoded(received.payload, from), asker(), waiting);
        break;
    case messageKind::messageBox:
        m_boxes.openMessage(decoded(received.payload, from), asker(), waiting);
        break;
    case messageKind::progress:
        m_active.createWindows();
        if (const auto command = readProgress(received.payload, from))
            doProgress(*command);
        m_active.drainDeletionQueue();
        break;
    default:
        break;
    }
    m_listeners.flushIfDue();
}

void handlers::cleanup()
{
    m_boxes.dismiss();
    m_listeners.send("shutDown");
    m_active.clear();
}
