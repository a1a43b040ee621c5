#include "tests/client/commandLineClient.h"

#include "tests/support/daemonProcess.h"

#include <QDir>
#include <QFileInfo>

commandLineClient::commandLineClient(const virtualScreen &screen)
    : m_identifier(daemonProcess::newIdentifier()), m_environment(screen.environment())
{
    m_environment.insert(QStringLiteral("PROGRESSD"), daemonProcess::executable());
    m_environment.insert(QStringLiteral("PROGRESS_IDENTIFIER"), m_identifier);
    m_environment.insert(QStringLiteral("PATH"), QFileInfo(QStringLiteral(PROGRESSCTL)).path() +
                                                     QLatin1Char(':') +
                                                     m_environment.value(QStringLiteral("PATH")));
}

commandLineClient::~commandLineClient()
{
    run({QStringLiteral("stop")});
    const QStringList mine{QStringLiteral("*_%1.*").arg(m_identifier),
                           QStringLiteral("*_%1-pipe*").arg(m_identifier)};
    for (const char *folder : {"/tmp", "/var/tmp", "/var/instrument"}) {
        QDir files{QLatin1String(folder)};
        for (const QString &name : files.entryList(mine, QDir::Files))
            files.remove(name);
    }
}

void commandLineClient::prepare(QProcess &process, const QStringList &arguments) const
{
    process.setProcessEnvironment(m_environment);
    process.setProgram(QStringLiteral(PROGRESSCTL));
    process.setArguments(arguments);
}

void commandLineClient::prepareScript(QProcess &process, const QString &script) const
{
    process.setProcessEnvironment(m_environment);
    process.setProgram(QStringLiteral("bash"));
    process.setArguments({QStringLiteral("-c"), script});
}

commandLineClient::result commandLineClient::run(const QStringList &arguments, const QByteArray &input) const
{
    childProcess process;
    prepare(process, arguments);
    process.start();
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(patienceMs) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}
