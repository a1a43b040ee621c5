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

void messageStream::commit(qsizetype size)
{
    char *const begin = m_waiting.end();
    char *const end = begin + size;
    const bool hasZero = std::memchr(begin, '\0', static_cast<size_t>(size));
    m_waiting.commit(hasZero ? std::remove(begin, end, '\0') - begin : size);
}

std::optional<message> messageStream::next()
{
    if (m_tooLong || (!m_open && !enterMessage()))
        return std::nullopt;
    if (!m_open->closing.empty())
        return finishMessage();
    m_waiting.drop(m_open->opening.size());
    return message{std::exchange(m_open, nullptr)->kind, {}};
}

/// Goes to the next opening tag, or to the end, as far as it is certain that no tag begins there.
bool messageStream::enterMessage()
{
    const std::string_view text = m_waiting.view();
    const char *const end = text.data() + text.size();
    const char *at = text.data();
    while ((at = std::find(at, end, '<')) != end && !opens({at, end}) && !mayOpen({at, end}))
        ++at;
    m_waiting.drop(static_cast<size_t>(at - text.data()));
    if (m_open)
        m_searched = m_open->opening.size();
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
    const std::string_view text = m_waiting.view();
    const size_t end = m_waiting.find(m_open->closing, m_searched);
    m_tooLong = std::min(end, text.size()) > wire::longestMessage;
    if (m_tooLong || end == text.npos)
        return std::nullopt;
    const size_t start = m_open->opening.size();
    m_waiting.drop(end + m_open->closing.size());
    return message{std::exchange(m_open, nullptr)->kind, text.substr(start, end - start)};
}
