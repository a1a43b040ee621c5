#include "server/claimedSlots.h"

#include "dialog/CProgressDialog.h"
#include "server/activeDialog.h"

int claimedSlots::claim()
{
    static_assert(CProgressDialog::MAX_ENTRIES == decltype(m_claimed)().size());
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

void claimedSlots::release(int slot)
{
    m_claimed.reset(static_cast<size_t>(slot));
    m_active.clearSlot(slot);
}
