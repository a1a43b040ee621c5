#pragma once

#include <array>

class handlers;

/// Which slots of the dialog are reserved, and for whom. An owner is any address that stays the same for as
/// long as it may own slots.
class claimedSlots
{
public:
    explicit claimedSlots(handlers &shared) : m_shared(shared) {}

    /// Reserves the lowest slot that shows neither row nor button and that nobody has claimed; -1 when there
    /// is none.
    int claim(const void *owner);
    /// Gives the owner's slots up, and removes what stands in them.
    void release(const void *owner);

private:
    handlers &m_shared;
    std::array<const void *, 10> m_owners{};
};
