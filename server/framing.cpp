#include "server/receiver.h"

#include "log/dump.h"
#include "server/handlers.h"
#include "stats/statistics.h"

#include <QCoreApplication>
#include <QTcpSocket>

namespace
{

/// Text that may wait for its closing tag, in bytes.
constexpr qsizetype maxWaiting = 16 * 1024 * 1024;
/// Answers that may wait in a channel whose client does not read, in bytes.
constexpr qint64 maxUnreadAnswers = 1024 * 1024;

/// Answers a box with the four bytes of its code.
void answer(QTcpSocket *asker, quint32 code)
{
    if (!asker || !asker->isOpen() || asker->bytesToWrite() > maxUnreadAnswers)
        return;
    asker->write(reinterpret_cast<const char *>(&code), sizeof code);
    asker->flush();
}

} // namespace

void receiver::gotData()
{
    // What waits behind a box waits no longer when more arrives, and is still its own sender's.
    while (dispatch()) {
    }
    m_client = findClient();
    const QByteArray text = m_client->readAll();
    m_command.append(QByteArrayView(text.constData(), qstrnlen(text.constData(), text.size())));
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
    const eventListeners::batch batch(handlers::instance().m_listeners);
    const noticeBoxes &boxes = handlers::instance().m_boxes;
    while (const std::optional<message> received = m_command.next()) {
        const qsizetype openBoxes = boxes.openCount();
        handle(*received);
        if (boxes.openCount() > openBoxes)
            return true;
    }
    return false;
}

void receiver::handle(const message &received)
{
    if (received.kind == messageKind::exit) {
        doExit();
        return;
    }
    handlers::instance().handle(received, dialect::port, [this] { return nextAnswer(); });
}

answerFunction receiver::nextAnswer()
{
    return [this, asker = m_client](quint32 code) {
        answer(asker, code);
        // The messages behind the box's have waited for its answer.
        QMetaObject::invokeMethod(this, &receiver::dispatch, Qt::QueuedConnection);
    };
}

void receiver::doExit()
{
    dump("---- got exit command by client!", 0);
    if (!m_dontQuit)
        QCoreApplication::quit();
}

void receiver::loadStatisticData(const char *file)
{
    statistics.load(file);
}

void receiver::saveStatisticData(const char *file)
{
    statistics.saveFinally(file);
}

void receiver::sendEvent(const QString &eventCode)
{
    handlers::instance().m_listeners.send(eventCode.toLatin1());
}

void receiver::BringWindowToFront()
{
    handlers::instance().m_active.bringToFront();
}

void receiver::cleanup()
{
    handlers::instance().cleanup();
}
