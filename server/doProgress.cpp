#include "server/handlers.h"

#include "dialog/CProgressDialog.h"
#include "stats/statistics.h"

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
        m_listeners.send(wire::nameOf(wire::eventKind::isActivated));
        break;
    case progressVerb::busyOn:
        m_active.busyOn();
        break;
    case progressVerb::busyOff:
        m_active.busyOff();
        break;
    case progressVerb::update:
        if (command.value == wire::givenUpPercent)
            m_active.giveUp();
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
    }
}
