#include "tests/client/commandLineClient.h"

#include "tests/support/daemonProcess.h"

#include <QFileInfo>

commandLineClient::commandLineClient(const virtualScreen &screen)
    : m_identifier(daemonProcess::newIdentifier()), m_environment(screen.environment())
{
    m_environment.insert("PROGRESSD", daemonProcess::executable());
    m_environment.insert("PROGRESS_IDENTIFIER", m_identifier);
    m_environment.insert("PATH", QFileInfo(PROGRESSCTL).path() + ':' + m_environment.value("PATH"));
}

commandLineClient::~commandLineClient()
{
    run("stop");
    removeFilesOf(m_identifier);
}

void commandLineClient::start(childProcess &process, const QString &arguments) const
{
    process.setProcessEnvironment(m_environment);
    process.start(PROGRESSCTL, QProcess::splitCommand(arguments));
}

void commandLineClient::startScript(childProcess &process, const QString &script) const
{
    process.setProcessEnvironment(m_environment);
    process.start("bash", {"-c", script});
}

commandLineClient::result commandLineClient::resultOf(childProcess &process)
{
    if (!process.waitForFinished(patienceMs) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

commandLineClient::result commandLineClient::run(const QString &arguments) const
{
    childProcess process;
    start(process, arguments);
    return resultOf(process);
}

commandLineClient::result commandLineClient::runScript(const QString &script) const
{
    childProcess process;
    startScript(process, script);
    return resultOf(process);
}
