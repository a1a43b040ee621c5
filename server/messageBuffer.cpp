#include "server/messageBuffer.h"

#include <algorithm>

namespace
{

std::string_view lastTag(size_t kind)
{
    const wire::messageTags &tags = wire::allTags[kind];
    return tags.closing.empty() ? tags.opening : tags.closing;
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
    for (size_t kind = 0; kind < wire::portKinds; ++kind) {
        const wire::messageTags &tag = wire::allTags[kind];
        for (qsizetype end = find(kind); end >= 0; end = find(kind)) {
            const std::string_view inFront(m_text.constData() + m_head, static_cast<size_t>(end - m_head));
            m_head = end + static_cast<qsizetype>(lastTag(kind).size());
            if (tag.closing.empty())
                return message{tag.kind, {}};
            if (const size_t start = wire::indexOfTag(inFront, tag.opening); start != inFront.npos)
                return message{tag.kind, inFront.substr(start + tag.opening.size())};
        }
    }
    return std::nullopt;
}

/// Where the tag begins that completes a message of the kind; -1 for nowhere.
qsizetype messageBuffer::find(size_t kind)
{
    const std::string_view text(m_text.constData(), static_cast<size_t>(m_text.size()));
    const std::string_view closing = lastTag(kind);
    const qsizetype from = std::max(m_searched[kind], m_head);
    const size_t found = wire::indexOfTag(text, closing, static_cast<size_t>(from));
    // A tag may be split over two pieces: all but its last byte may already be there.
    const qsizetype unsearched = m_text.size() - static_cast<qsizetype>(closing.size()) + 1;
    m_searched[kind] = found != text.npos ? static_cast<qsizetype>(found) : std::max(from, unsearched);
    return found != text.npos ? m_searched[kind] : -1;
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
