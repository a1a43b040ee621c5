#include "tests/support/daemonProcess.h"

#include "tests/support/virtualScreen.h"

#include <QCoreApplication>
#include <QTest>

daemonProcess::daemonProcess(const virtualScreen &screen, const QStringList &furtherArguments)
    : m_endsOnRequest(furtherArguments.size() != 1)
{
    m_process.setProcessEnvironment(screen.environment());
    m_process.setWorkingDirectory(directory());
    m_process.start(executable(), QStringList{m_identifier} + furtherArguments);
    m_process.waitForStarted(patienceMs);
    const bool serving =
        QTest::qWaitFor([this] { return portsOf(m_identifier) || !isRunning(); }, patienceMs);
    if (!serving || !isRunning())
        QTest::qFail("the daemon does not come up", __FILE__, __LINE__);
    m_ports = portsOf(m_identifier).value_or(ports());
}

daemonProcess::~daemonProcess()
{
    if (!m_endWasSeen)
        end();
    if (const QByteArray errors = m_process.readAllStandardError(); !errors.isEmpty())
        qWarning("the daemon wrote: %s", errors.left(500).constData());
    removeFilesOf(m_identifier);
}

void daemonProcess::end()
{
    if (isRunning() && !m_endsOnRequest) {
        m_process.terminate();
        m_process.waitForFinished(patienceMs);
        return;
    }
    // It may already be about to end, because its last client has gone.
    if (isRunning()) {
        clientChannel last(m_ports.command);
        last.send("<exit/>");
        last.waitForClosed();
    }
    if (waitForEnd() != 0)
        QTest::qFail("the daemon has not ended in order", __FILE__, __LINE__);
}

QString daemonProcess::executable()
{
    return PROGRESSD;
}

QString daemonProcess::newIdentifier()
{
    static int count = 0;
    return QStringLiteral("test%1-%2").arg(QCoreApplication::applicationPid()).arg(++count);
}

std::optional<daemonProcess::ports> daemonProcess::portsOf(const QString &identifier)
{
    const QByteArrayList lines = contentOf(lockFileOf(identifier)).split('\n');
    if (lines.size() < 3)
        return std::nullopt;
    return ports{lines[0].toUShort(), lines[1].toUShort()};
}

std::unique_ptr<clientChannel> daemonProcess::openCommands() const
{
    return std::make_unique<clientChannel>(m_ports.command);
}

std::unique_ptr<clientChannel> daemonProcess::openEvents(const QByteArray &configuration) const
{
    auto events = std::make_unique<clientChannel>(m_ports.event);
    // The event server takes commands as well: its answer shows that the channel has been accepted.
    events->configure(configuration);
    if (!events->isServed())
        QTest::qFail("the event channel is not served", __FILE__, __LINE__);
    return events;
}

bool daemonProcess::isRunning()
{
    // Takes notice of an end.
    m_process.waitForFinished(0);
    return m_process.state() == QProcess::Running;
}

int daemonProcess::waitForEnd()
{
    m_endWasSeen = true;
    if (isRunning() && !m_process.waitForFinished(patienceMs))
        return -1;
    return m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}
