#include "server/messageStream.h"

#include <algorithm>

char *messageStream::reserve(qsizetype size)
{
    if (m_head == m_end) {
        m_searched -= m_head;
        m_head = m_end = 0;
        if (m_text.size() > 4 * size)
            m_text = QByteArray();
    } else if (m_head > m_end - m_head) {
        std::copy(m_text.cbegin() + m_head, m_text.cbegin() + m_end, m_text.begin());
        m_searched -= m_head;
        m_end -= m_head;
        m_head = 0;
    }
    if (m_text.size() < m_end + size)
        m_text.resize(std::max(m_end + size, 2 * m_text.size()));
    return m_text.data() + m_end;
}

void messageStream::commit(qsizetype size)
{
    char *const begin = m_text.data() + m_end;
    m_end += size;
    if (std::memchr(begin, '\0', static_cast<size_t>(size)))
        m_end = std::remove(begin, begin + size, '\0') - m_text.data();
}

std::optional<message> messageStream::next()
{
    while (!m_tooLong && (m_open || enterMessage())) {
        if (m_open->closing.isEmpty()) {
            m_head += m_open->opening.size();
            return message{std::exchange(m_open, nullptr)->kind, {}};
        }
        return finishMessage();
    }
    return std::nullopt;
}

/// Goes to the next opening tag, or to the end, as far as it is certain that no tag begins there.
bool messageStream::enterMessage()
{
    const QByteArrayView text(m_text.constData(), m_end);
    while (m_head < m_end) {
        const qsizetype at = text.indexOf('<', m_head);
        m_head = at < 0 ? m_end : at;
        const QByteArrayView rest = text.sliced(m_head);
        bool mayBegin = false;
        for (const messageTags &tags : allTags) {
            if (rest.startsWith(tags.opening)) {
                m_open = &tags;
                m_searched = m_head + tags.opening.size();
                return true;
            }
            mayBegin = mayBegin || tags.opening.startsWith(rest);
        }
        if (mayBegin)
            return false;
        ++m_head;
    }
    return false;
}

std::optional<message> messageStream::finishMessage()
{
    const QByteArrayView text(m_text.constData(), m_end);
    const qsizetype end = indexOfTag(text, m_open->closing, m_searched);
    const qsizetype known = end >= 0 ? end : m_end;
    m_tooLong = known - m_head > longestMessage;
    if (m_tooLong || end < 0) {
        // A tag may be split over two reads: all but its last byte may already be there.
        m_searched = std::max(m_searched, m_end - m_open->closing.size() + 1);
        return std::nullopt;
    }
    const qsizetype start = m_head + m_open->opening.size();
    m_head = end + m_open->closing.size();
    return message{std::exchange(m_open, nullptr)->kind, text.sliced(start, end - start)};
}
