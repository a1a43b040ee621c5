#pragma once

#include "wire/tags.h"

#include <QByteArray>

#include <algorithm>

/// Bytes that wait to be cut into messages, or to be sent: they come at the end and leave at the front. The
/// cost is linear in the bytes: nothing is searched twice, and what waits is moved only when it is the
/// smaller part.
class waitingBytes
{
public:
    /// Room for `size` more bytes behind those that wait; `commit()` says how many of them came.
    char *reserve(qsizetype size)
    {
        if (m_head == m_end) {
            m_head = m_end = 0;
            if (m_bytes.size() > 4 * size)
                m_bytes = QByteArray();
        } else if (m_head > m_end - m_head) {
            std::copy(m_bytes.cbegin() + m_head, m_bytes.cbegin() + m_end, m_bytes.begin());
            m_end -= m_head;
            m_head = 0;
        }
        if (m_bytes.size() < m_end + size)
            m_bytes.resize(std::max(m_end + size, 2 * m_bytes.size()));
        return end();
    }
    void commit(qsizetype size) { m_end += size; }
    char *end() { return m_bytes.data() + m_end; }
    void append(QByteArrayView bytes)
    {
        std::copy(bytes.begin(), bytes.end(), reserve(bytes.size()));
        commit(bytes.size());
    }

    qsizetype size() const { return m_end - m_head; }

    /// Those that wait, from the front on; valid until `reserve()`.
    std::string_view view() const { return {m_bytes.constData() + m_head, static_cast<size_t>(size())}; }
    void drop(size_t size) { m_head += static_cast<qsizetype>(size); }

    /// Where `tag` begins; npos for nowhere. It does not begin in front of `searched`, which goes on to where
    /// it begins, or may begin when more has come: all but its last byte may already be there.
    size_t find(std::string_view tag, size_t &searched) const
    {
        const std::string_view text = view();
        const size_t found = wire::indexOfTag(text, tag, searched);
        searched = found != text.npos ? found : std::max(searched + tag.size(), text.size() + 1) - tag.size();
        return found;
    }

private:
    QByteArray m_bytes;
    qsizetype m_head = 0;
    qsizetype m_end = 0;
};
