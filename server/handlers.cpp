#include "server/handlers.h"

#include "dialog/CProgressDialog.h"
#include "stats/statistics.h"

handlers::handlers() : m_active(m_listeners, m_order), m_boxes(m_active, m_order) {}

void handlers::handle(const message &received, dialect from, const askerFunction &asker,
                      const QObject *waiting)
{
    switch (received.kind) {
    case messageKind::configuration:
        doConfiguration(decoded(received.payload, from));
        break;
    case messageKind::assertion:
    case messageKind::messageBox:
        m_boxes.open(received.kind, decoded(received.payload, from), asker(), waiting);
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

void handlers::doProgress(const progressCommand &command)
{
    CProgressDialog &dialog = *m_active.dialog();
    const int slot = command.slot;
    switch (command.verb) {
    case progressVerb::messageStart:
        m_active.messageStart();
        break;
    case progressVerb::messageStop:
        m_active.messageStop();
        break;
    case progressVerb::activate:
        m_active.activate();
        m_listeners.send(wire::eventKind::isActivated);
        break;
    case progressVerb::busyOn:
        m_active.busyOn();
        break;
    case progressVerb::busyOff:
        m_active.busyOff();
        break;
    case progressVerb::update:
        if (command.value == wire::givenUpPercent)
            m_active.noticeOfEnd().giveUp();
        dialog.updateBar(slot, command.value);
        break;
    case progressVerb::create:
        dialog.createBar(slot, command.text);
        break;
    case progressVerb::remove:
        dialog.removeBar(slot);
        break;
    case progressVerb::addButt:
        dialog.addButton(slot, command.text);
        break;
    case progressVerb::delButt:
        dialog.removeButton(slot);
        break;
    case progressVerb::addText:
        dialog.createText(slot, command.text);
        break;
    case progressVerb::updateText:
        dialog.updateText(slot, command.text);
        break;
    case progressVerb::delText:
        dialog.removeText(slot);
        break;
    case progressVerb::amount:
        statistics.setAmount(command.amount);
        break;
    case progressVerb::pulse:
        dialog.pulseBar(slot);
        break;
    case progressVerb::finish:
        dialog.finishSlot(slot);
        break;
    case progressVerb::join:
        dialog.joinSlot(slot, command.value);
        break;
    }
}

int handlers::claim()
{
    static_assert(CProgressDialog::MAX_ENTRIES == wire::slotCount);
    const CProgressDialog *dialog = m_active.dialog();
    for (size_t i = 0; i < m_claimed.size(); ++i) {
        const int slot = static_cast<int>(i);
        if (m_claimed[i] || (dialog && !dialog->isFree(slot)))
            continue;
        m_claimed.set(i);
        return slot;
    }
    return -1;
}

void handlers::release(int slot)
{
    m_claimed.reset(static_cast<size_t>(slot));
    m_active.clearSlot(slot);
}

void handlers::cleanup()
{
    m_boxes.dismiss();
    m_listeners.send(wire::eventKind::shutDown);
    m_active.clear();
}
