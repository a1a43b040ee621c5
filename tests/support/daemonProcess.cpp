#include "tests/support/daemonProcess.h"

#include "tests/support/virtualScreen.h"

#include <QCoreApplication>
#include <QFile>
#include <QHostAddress>
#include <QTcpSocket>
#include <QTest>

daemonProcess::daemonProcess(const virtualScreen &screen, const QStringList &furtherArguments)
    : m_endsOnRequest(furtherArguments.size() != 1)
{
    m_process.setProcessEnvironment(screen.environment());
    m_process.setWorkingDirectory(directory());
    m_process.start(executable(), QStringList{m_identifier} + furtherArguments);
    m_process.waitForStarted(patienceMs);
    const bool serving = QTest::qWaitFor([this] { return readLockFile() || !isRunning(); }, patienceMs);
    if (!serving || !isRunning())
        QTest::qFail("the daemon does not come up", __FILE__, __LINE__);
}

daemonProcess::~daemonProcess()
{
    if (!m_endWasSeen)
        end();
    if (const QByteArray errors = m_process.readAllStandardError(); !errors.isEmpty())
        qWarning("the daemon wrote: %s", errors.constData());
    QFile::remove(lockFile());
    for (const QString &file : statisticsFiles())
        QFile::remove(file);
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
        QTcpSocket channel;
        channel.connectToHost(QHostAddress::LocalHost, m_commandPort);
        if (channel.waitForConnected(patienceMs)) {
            channel.write("<exit/>");
            channel.waitForBytesWritten(patienceMs);
            if (channel.state() != QAbstractSocket::UnconnectedState)
                channel.waitForDisconnected(patienceMs);
        }
    }
    if (waitForEnd() != 0)
        QTest::qFail("the daemon has not ended in order", __FILE__, __LINE__);
}

QString daemonProcess::executable()
{
    return QStringLiteral(PROGRESSD);
}

QString daemonProcess::newIdentifier()
{
    static int count = 0;
    return QStringLiteral("test%1-%2").arg(QCoreApplication::applicationPid()).arg(++count);
}

QString daemonProcess::lockFileOf(const QString &identifier)
{
    return QStringLiteral("/tmp/HalvornRunning_%1.lock").arg(identifier);
}

QStringList daemonProcess::statisticsFiles() const
{
    const QString name = QStringLiteral("/currentTimestamps_%1.txt").arg(m_identifier);
    return {QStringLiteral("/var/instrument") + name, QStringLiteral("/var/tmp") + name};
}

/// False while the file is missing or only half written.
bool daemonProcess::readLockFile()
{
    QFile file(lockFile());
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray text = file.readAll();
    if (text.count('\n') < 2)
        return false;
    const QByteArrayList lines = text.split('\n');
    m_commandPort = lines[0].toUShort();
    m_eventPort = lines[1].toUShort();
    return true;
}

std::unique_ptr<clientChannel> daemonProcess::openCommands() const
{
    return std::make_unique<clientChannel>(m_commandPort);
}

std::unique_ptr<clientChannel> daemonProcess::openEvents(const QByteArray &configuration) const
{
    auto events = std::make_unique<clientChannel>(m_eventPort);
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
