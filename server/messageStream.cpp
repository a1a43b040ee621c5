#include "server/messageStream.h"

#include <algorithm>
#include <utility>

namespace
{

/// An opening tag may be split over two reads.
bool mayOpen(std::string_view rest)
{
    return std::any_of(
        std::begin(wire::allTags), std::end(wire::allTags),
        [rest](const wire::messageTags &tags) { return wire::beginsWith(tags.opening, rest); });
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
        if (m_open->closing.empty()) {
            m_head += openingSize();
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
        m_searched = m_head + openingSize();
    return m_open;
}

/// The tag that came last is the likeliest.
bool messageStream::opens(std::string_view rest)
{
    const auto begins = [rest](const wire::messageTags &tags) {
        return wire::beginsWith(rest, tags.opening);
    };
    if (!begins(*m_last)) {
        const auto *found = std::find_if(std::begin(wire::allTags), std::end(wire::allTags), begins);
        if (found == std::end(wire::allTags))
            return false;
        m_last = found;
    }
    m_open = m_last;
    return true;
}

std::optional<message> messageStream::finishMessage()
{
    const std::string_view text(m_text.constData(), static_cast<size_t>(m_end));
    const auto closingSize = static_cast<qsizetype>(m_open->closing.size());
    const size_t found = wire::indexOfTag(text, m_open->closing, static_cast<size_t>(m_searched));
    const qsizetype end = found != text.npos ? static_cast<qsizetype>(found) : m_end;
    m_tooLong = end - m_head > static_cast<qsizetype>(wire::longestMessage);
    if (m_tooLong || found == text.npos) {
        // A tag may be split over two reads: all but its last byte may already be there.
        m_searched = std::max(m_searched, m_end - closingSize + 1);
        return std::nullopt;
    }
    const qsizetype start = m_head + openingSize();
    m_head = end + closingSize;
    return message{std::exchange(m_open, nullptr)->kind,
                   text.substr(static_cast<size_t>(start), static_cast<size_t>(end - start))};
}
