#include "server/claimedSlots.h"

#include "dialog/CProgressDialog.h"
#include "server/handlers.h"

#include <utility>

static_assert(CProgressDialog::MAX_ENTRIES == 10);

int claimedSlots::claim(const void *owner)
{
    const CProgressDialog *dialog = m_shared.m_active.dialog();
    for (size_t i = 0; i < m_owners.size(); ++i) {
        const int slot = static_cast<int>(i);
        if (m_owners[i] || (dialog && !dialog->isFree(slot)))
            continue;
        m_owners[i] = owner;
        return slot;
    }
    return -1;
}

void claimedSlots::release(const void *owner)
{
    for (size_t i = 0; i < m_owners.size(); ++i) {
        if (m_owners[i] != owner)
            continue;
        m_owners[i] = nullptr;
        m_shared.m_active.clearSlot(static_cast<int>(i));
    }
}
