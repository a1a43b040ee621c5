#pragma once

#include <algorithm>

namespace wire
{

/// A remaining time for eyes that rest on it: seconds below a minute, tens of seconds below ten minutes,
/// whole minutes beyond. It changes no more often than such a unit, and grows only by two of them at least,
/// so that it never goes back and forth between neighbours.
class calmTime
{
public:
    /// What to show `elapsed` seconds after the run's start, with `remaining` seconds left (0 or more).
    int shown(int remaining, int elapsed)
    {
        const int unit = unitOf(remaining);
        const int rounded = remaining / unit * unit + (remaining % unit * 2 >= unit ? unit : 0);
        const bool isSoon = elapsed >= m_since && elapsed - m_since < std::min(unit, unitOf(m_shown));
        const bool isNeighbour = rounded >= m_shown && rounded - 2 * unitOf(rounded) < m_shown;
        if (m_shown >= 0 && (isSoon || isNeighbour))
            return m_shown;
        m_since = elapsed;
        return m_shown = rounded;
    }
    /// What is shown has stood for longer than it says.
    bool isOverdue(int elapsed) const { return elapsed - m_since > m_shown + 1; }

private:
    static int unitOf(int seconds)
    {
        constexpr int minute = 60;
        return seconds < minute ? 1 : seconds < 10 * minute ? 10 : minute;
    }

    int m_shown = -1;
    int m_since = 0;
};

} // namespace wire
