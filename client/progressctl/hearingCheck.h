#pragma once

#include <chrono>
#include <cstdlib>
#include <optional>

/// Notices that the event channel has gone deaf, which the daemon's side never tells: a bar that has moved
/// far enough must have caused an event.
class hearingCheck
{
public:
    using time = std::chrono::steady_clock::time_point;

    /// An event has come while the bar stood at `percent`.
    void heard(int percent)
    {
        m_percentWhenHeard = percent;
        m_owedSince.reset();
    }

    /// The bar was moved. With ten bars, the average that events tell changes after ten percents of one.
    void moved(int percent, time now)
    {
        if (!m_owedSince && std::abs(percent - m_percentWhenHeard) >= 10)
            m_owedSince = now;
    }

    /// When an event that is owed is overdue, if one is.
    std::optional<time> overdueAt() const
    {
        return m_owedSince ? std::optional(*m_owedSince + std::chrono::seconds(2)) : std::nullopt;
    }

private:
    int m_percentWhenHeard = 0;
    std::optional<time> m_owedSince;
};
