#include "server/receiver.h"

#include "app/dump.h"

#include <QCoreApplication>
#include <QScopedValueRollback>
#include <QTcpSocket>

namespace
{

/// Text that may wait for its closing tag, in bytes.
constexpr qsizetype maxWaiting = 16 * 1024 * 1024;

} // namespace

void receiver::gotData()
{
    // What waits behind a box waits no longer when more arrives, and is still its own sender's.
    while (dispatch()) {
    }
    m_client = findClient();
    QByteArray text = m_client->readAll();
    if (const qsizetype zero = text.indexOf('\0'); zero >= 0)
        text.truncate(zero);
    m_command.append(text);
    dispatch();
    if (m_command.waiting() > maxWaiting) {
        dump("---- dropping text without a closing tag, bytes", static_cast<int>(m_command.waiting()));
        m_command.clear();
    }
}

/// Handles the messages that wait. A box keeps those behind it waiting until it is answered, or until more
/// arrives; returns true then.
bool receiver::dispatch()
{
    bool openedBox = false;
    {
        const QScopedValueRollback collecting(m_collectingEvents, true);
        openedBox = dispatchMessages();
    }
    flushEvents();
    return openedBox;
}

bool receiver::dispatchMessages()
{
    while (const std::optional<message> received = m_command.next()) {
        const qsizetype openBoxes = m_openBoxes.size();
        handle(*received);
        if (m_openBoxes.size() > openBoxes)
            return true;
    }
    return false;
}

void receiver::handle(const message &received)
{
    const QString payload = QString::fromLatin1(received.payload);
    switch (received.kind) {
    case messageKind::configuration:
        doConfiguration(payload);
        break;
    case messageKind::assertion:
        doAssertion(payload);
        break;
    case messageKind::messageBox:
        doMessage(payload);
        break;
    case messageKind::progress:
        doProgress(payload);
        drainDeletionQueue();
        break;
    case messageKind::exit:
        doExit();
        break;
    }
}

void receiver::doExit()
{
    dump("---- got exit command by client!", 0);
    if (!m_dontQuit)
        QCoreApplication::quit();
}
