#pragma once

#include <unistd.h>

#include <utility>

/// Owns an open file descriptor, or none (-1).
class fileDescriptor
{
public:
    explicit fileDescriptor(int descriptor = -1) : m_descriptor(descriptor) {}
    fileDescriptor(fileDescriptor &&other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    fileDescriptor &operator=(fileDescriptor &&other) noexcept
    {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~fileDescriptor() { close(); }

    explicit operator bool() const { return m_descriptor >= 0; }
    int get() const { return m_descriptor; }

    /// False when what was written before did not reach the file.
    bool close() { return m_descriptor < 0 || ::close(std::exchange(m_descriptor, -1)) == 0; }

private:
    int m_descriptor;
};
