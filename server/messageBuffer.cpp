#include "server/messageBuffer.h"

#include <algorithm>

namespace
{

QByteArrayView lastTag(size_t kind)
{
    return allTags[kind].closing.isEmpty() ? allTags[kind].opening : allTags[kind].closing;
}

} // namespace

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
    for (size_t kind = 0; kind < portKinds; ++kind) {
        const messageTags &tag = allTags[kind];
        const QByteArrayView last = lastTag(kind);
        for (qsizetype end = find(kind); end >= 0; end = find(kind)) {
            const QByteArrayView inFront = QByteArrayView(m_text).sliced(m_head, end - m_head);
            m_head = end + last.size();
            if (tag.closing.isEmpty())
                return message{tag.kind, {}};
            if (const qsizetype start = indexOfTag(inFront, tag.opening); start >= 0)
                return message{tag.kind, inFront.sliced(start + tag.opening.size())};
        }
    }
    return std::nullopt;
}

/// Where the tag begins that completes a message of the kind.
qsizetype messageBuffer::find(size_t kind)
{
    const QByteArrayView closing = lastTag(kind);
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
