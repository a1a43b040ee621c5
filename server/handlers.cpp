#include "server/handlers.h"

handlers *handlers::s_instance = nullptr;

handlers::handlers() : m_active(m_listeners, m_order), m_boxes(m_active, m_order)
{
    s_instance = this;
}

handlers::~handlers()
{
    s_instance = nullptr;
}

void handlers::handle(const message &received, dialect from, const askerFunction &asker)
{
    switch (received.kind) {
    case messageKind::configuration:
        doConfiguration(decoded(received.payload, from));
        break;
    case messageKind::assertion:
        m_boxes.openAssertion(decoded(received.payload, from), asker());
        break;
    case messageKind::messageBox:
        m_boxes.openMessage(decoded(received.payload, from), asker());
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
