#include "server/messageBuffer.h"

#include <algorithm>

void messageBuffer::append(QByteArrayView text)
{
    compact();
    m_text.append(text);
}

void messageBuffer::clear()
{
    m_text.clear();
    m_head = 0;
    m_searched.fill(0);
}

std::optional<message> messageBuffer::next()
{
    for (size_t kind = 0; kind < messageKinds; ++kind) {
        const messageTags &tag = tagsOf[kind];
        for (qsizetype end = findClosingTag(kind); end >= 0; end = findClosingTag(kind)) {
            const QByteArrayView inFront = QByteArrayView(m_text).sliced(m_head, end - m_head);
            m_head = end + tag.closing.size();
            if (tag.opening.isEmpty())
                return message{static_cast<messageKind>(kind), {}};
            if (const qsizetype start = indexOfTag(inFront, tag.opening); start >= 0)
                return message{static_cast<messageKind>(kind), inFront.sliced(start + tag.opening.size())};
        }
    }
    return std::nullopt;
}

qsizetype messageBuffer::findClosingTag(size_t kind)
{
    const QByteArrayView closing = tagsOf[kind].closing;
    const qsizetype from = std::max(m_searched[kind], m_head);
    const qsizetype found = indexOfTag(m_text, closing, from);
    // A tag may be split over two pieces: all but its last byte may already be there.
    m_searched[kind] = found >= 0 ? found : std::max(from, m_text.size() - closing.size() + 1);
    return found;
}

/// Forgets what has been cut, where what remains is the smaller part.
void messageBuffer::compact()
{
    if (m_head == m_text.size()) {
        clear();
        return;
    }
    if (m_head < m_text.size() - m_head)
        return;
    m_text.remove(0, m_head);
    for (qsizetype &searched : m_searched)
        searched = std::max<qsizetype>(0, searched - m_head);
    m_head = 0;
}
