#pragma once

#include <unistd.h>
#include <utility>

/// Owns a file descriptor; -1 for none.
class descriptor
{
public:
    explicit descriptor(int fd = -1) : m_fd(fd) {}
    descriptor(descriptor &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    descriptor &operator=(descriptor &&other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }

    int get() const { return m_fd; }

private:
    int m_fd;
};
