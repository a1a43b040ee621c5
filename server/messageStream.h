#pragma once

#include "server/message.h"
#include "server/waitingBytes.h"

#include <optional>

/// Cuts tagged messages out of the bytes of one local channel, in the order in which they arrive.
///
/// A message reaches from an opening tag to the first closing tag of its kind, whatever stands between;
/// everything else is dropped, zero bytes first.
class messageStream
{
public:
    /// Room for `size` more bytes behind those that wait; `commit()` says how many of them came.
    char *reserve(qsizetype size) { return m_waiting.reserve(size); }
    void commit(qsizetype size);

    /// The next message; none when no message is complete, or when one has become too long. Its payload stays
    /// valid until the next call of this or of `reserve()`.
    std::optional<message> next();
    /// A message has become too long; no further ones come.
    bool isTooLong() const { return m_tooLong; }

private:
    bool enterMessage();
    bool opens(std::string_view rest);
    std::optional<message> finishMessage();

    /// Within a message, from its opening tag on.
    waitingBytes m_waiting;
    /// Within a message, in front of where its closing tag does not begin.
    size_t m_searched = 0;
    /// The tags of the message whose opening tag has been seen and whose closing tag has not, or null; and
    /// those of the last message.
    const wire::messageTags *m_open = nullptr;
    const wire::messageTags *m_last = wire::allTags;
    bool m_tooLong = false;
};
