#include "server/lifespan.h"

#include "log/dump.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>

lifespan::lifespan(const terms &given) : m_terms(given)
{
    m_alone.setSingleShot(true);
    m_alone.setInterval(std::chrono::seconds(given.longestAlone));
    QObject::connect(&m_alone, &QTimer::timeout, &m_alone,
                     [this] { endIfAlone("---- doing exit, nobody is there"); });
    if (given.longestAlone > 0)
        m_alone.start();
}

void lifespan::clientGone()
{
    if (m_terms.basePort >= 0)
        return;
    if (!m_terms.stays)
        endIfAlone("---- doing exit by last closed connection!");
    else if (m_terms.longestAlone > 0)
        m_alone.start();
}

bool lifespan::requestExit(int portnum) const
{
    dump("---- got exit command by client!", 0);
    if (portnum >= 0)
        return false;
    QCoreApplication::quit();
    return true;
}

void lifespan::stop() const
{
    dump("---- got stop command by client!", 0);
    QCoreApplication::quit();
}

void lifespan::endIfAlone(const char *reason)
{
    auto found = wayIn::presence::none;
    for (wayIn *way : m_ways)
        found = std::max(found, way->clients());
    switch (found) {
    case wayIn::presence::client:
        break;
    case wayIn::presence::uncertain:
        QMetaObject::invokeMethod(
            &m_alone, [this, reason] { endIfAlone(reason); }, Qt::QueuedConnection);
        break;
    case wayIn::presence::none:
        dump(reason, 0);
        QCoreApplication::quit();
    }
}
