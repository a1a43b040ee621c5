#pragma once

#include <bitset>

class activeDialog;

/// Which slots of the dialog are reserved. Who has reserved one gives it up.
class claimedSlots
{
public:
    explicit claimedSlots(activeDialog &active) : m_active(active) {}

    /// Reserves the lowest slot that shows neither row nor button and that nobody has claimed; -1 when there
    /// is none.
    int claim();
    /// Gives a claimed slot up, and removes what stands in it.
    void release(int slot);

private:
    activeDialog &m_active;
    std::bitset<10> m_claimed;
};
