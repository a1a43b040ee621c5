#include "server/messageBuffer.h"

std::optional<message> messageBuffer::next()
{
    for (size_t i = 0; i < wire::portKinds; ++i) {
        const auto &[kind, opening, closing] = wire::allTags[i];
        const std::string_view last = closing.empty() ? opening : closing;
        for (size_t end; (end = m_waiting.find(last, m_searched[i])) != last.npos;) {
            const std::string_view inFront = m_waiting.view().substr(0, end);
            drop(end + last.size());
            if (closing.empty())
                return message{kind, {}};
            if (const size_t start = wire::indexOfTag(inFront, opening); start != inFront.npos)
                return message{kind, inFront.substr(start + opening.size())};
        }
    }
    return std::nullopt;
}

void messageBuffer::drop(size_t size)
{
    m_waiting.drop(size);
    for (size_t &searched : m_searched)
        searched -= std::min(searched, size);
}
