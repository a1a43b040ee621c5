#include "stats/lineReader.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

lineReader::lineReader(int descriptor) : m_descriptor(descriptor), m_buffer(4 * maxLine) {}

std::optional<std::string_view> lineReader::next()
{
    for (;;) {
        const std::string_view unread(m_buffer.data() + m_begin, m_end - m_begin);
        const std::size_t length = unread.find('\n');
        if (length != std::string_view::npos) {
            m_begin += length + 1;
            if (!std::exchange(m_passingOver, false) && length <= maxLine)
                return unread.substr(0, length);
            continue;
        }
        if (unread.size() > maxLine)
            m_passingOver = true;
        if (m_passingOver)
            m_begin = m_end;
        if (refill())
            continue;
        // Although nothing came, what is left has been moved to the buffer's start.
        const std::string_view lastLine(m_buffer.data(), m_end);
        m_begin = m_end;
        if (m_passingOver || lastLine.empty())
            return std::nullopt;
        return lastLine;
    }
}

bool lineReader::refill()
{
    const std::size_t kept = m_end - m_begin;
    std::memmove(m_buffer.data(), m_buffer.data() + m_begin, kept);
    ssize_t count;
    do
        count = read(m_descriptor, m_buffer.data() + kept, m_buffer.size() - kept);
    while (count < 0 && errno == EINTR);
    m_begin = 0;
    m_end = kept + (count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
}
