#pragma once

#include <algorithm>
#include <chrono>

/// A point in time up to which a call may wait; a negative time-out means never.
class deadline
{
public:
    using clock = std::chrono::steady_clock;

    explicit deadline(std::chrono::milliseconds timeout)
        : m_never(timeout.count() < 0), m_end(m_never ? clock::time_point::max() : clock::now() + timeout)
    {
    }

    static deadline earlier(const deadline &one, const deadline &other)
    {
        return one.m_end < other.m_end ? one : other;
    }

    bool isOver() const { return !m_never && clock::now() >= m_end; }

    /// What is left, in milliseconds rounded up, as poll(2) wants it: -1 for no limit.
    int leftForPoll() const
    {
        if (m_never)
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - clock::now()).count();
        return static_cast<int>(std::clamp<long long>(left, 0, 24 * 60 * 60 * 1000));
    }

private:
    bool m_never;
    clock::time_point m_end;
};
