#include "server/messageStream.h"

#include <algorithm>
#include <utility>

namespace
{

/// An opening tag may be split over two reads.
bool mayOpen(QByteArrayView rest)
{
    return std::any_of(std::begin(allTags), std::end(allTags),
                       [rest](const messageTags &tags) { return beginsWith(tags.opening, rest); });
}

} // namespace

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
    const char *const end = m_text.constData() + m_end;
    const char *at = m_text.constData() + m_head;
    while ((at = std::find(at, end, '<')) != end && !opens({at, end}) && !mayOpen({at, end}))
        ++at;
    m_head = at - m_text.constData();
    if (m_open)
        m_searched = m_head + m_open->opening.size();
    return m_open;
}

/// The tag that came last is the likeliest.
bool messageStream::opens(QByteArrayView rest)
{
    const auto begins = [rest](const messageTags &tags) { return beginsWith(rest, tags.opening); };
    if (!begins(*m_last)) {
        const auto *found = std::find_if(std::begin(allTags), std::end(allTags), begins);
        if (found == std::end(allTags))
            return false;
        m_last = found;
    }
    m_open = m_last;
    return true;
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
