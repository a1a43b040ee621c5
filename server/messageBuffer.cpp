#include "server/messageBuffer.h"

#include <algorithm>

namespace
{

struct messageTags {
    QByteArrayView opening; ///< empty for a message without payload
    QByteArrayView closing;
};

constexpr std::array tags{
    messageTags{"<configuration>", "</configuration>"},
    messageTags{"<assert>", "</assert>"},
    messageTags{"<msgbox>", "</msgbox>"},
    messageTags{"<progress>", "</progress>"},
    messageTags{"", "<exit/>"},
};

} // namespace

void messageBuffer::append(const QByteArray &text)
{
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
    static_assert(tags.size() == kinds);
    for (size_t kind = 0; kind < kinds; ++kind) {
        const messageTags &tag = tags[kind];
        for (qsizetype end = findClosingTag(kind); end >= 0; end = findClosingTag(kind)) {
            const QByteArrayView inFront = QByteArrayView(m_text).sliced(m_head, end - m_head);
            const qsizetype start = inFront.indexOf(tag.opening);
            QByteArray payload;
            if (start >= 0 && !tag.opening.isEmpty())
                payload = inFront.sliced(start + tag.opening.size()).toByteArray();
            cut(end + tag.closing.size());
            if (start >= 0)
                return message{static_cast<messageKind>(kind), payload};
        }
    }
    return std::nullopt;
}

qsizetype messageBuffer::findClosingTag(size_t kind)
{
    const QByteArrayView closing = tags[kind].closing;
    const qsizetype from = std::max(m_searched[kind], m_head);
    const qsizetype found = QByteArrayView(m_text).indexOf(closing, from);
    // A tag may be split over two pieces: all but its last byte may already be there.
    m_searched[kind] = found >= 0 ? found : std::max(from, m_text.size() - closing.size() + 1);
    return found;
}

void messageBuffer::cut(qsizetype end)
{
    m_head = end;
    if (m_head < m_text.size() - m_head)
        return;
    m_text.remove(0, m_head);
    for (qsizetype &searched : m_searched)
        searched = std::max<qsizetype>(0, searched - m_head);
    m_head = 0;
}
