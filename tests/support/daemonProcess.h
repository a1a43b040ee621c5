#pragma once

#include "tests/support/childProcess.h"
#include "tests/support/clientChannel.h"
#include "tests/support/files.h"

#include <QTemporaryDir>

#include <memory>

class virtualScreen;

/// A real daemon with an identifier and a working directory of its own. Its files go with it. A test during
/// which it crashes, or after which it does not end in order, fails.
class daemonProcess
{
public:
    /// Starts the daemon with its identifier and `furtherArguments` and waits until it serves.
    explicit daemonProcess(const virtualScreen &screen, const QStringList &furtherArguments = {});
    ~daemonProcess();

    static QString executable();
    /// An identifier that no other daemon has.
    static QString newIdentifier();
    struct ports {
        quint16 command = 0; ///< 0: it does not listen, or there is no daemon
        quint16 event = 0;
    };
    /// What the lock file says, nothing while it is missing or only half written.
    static std::optional<ports> portsOf(const QString &identifier);

    QString lockFile() const { return lockFileOf(m_identifier); }
    /// What the daemon has saved.
    QByteArray statistics() const { return statisticsOf(m_identifier); }
    QString directory() const { return m_directory.path(); }
    quint16 commandPort() const { return m_ports.command; }
    quint16 eventPort() const { return m_ports.event; }

    std::unique_ptr<clientChannel> openCommands() const;
    /// Opens an event channel and waits until the daemon has taken it in; `configuration` is applied in front
    /// of the daemon's first progress command.
    std::unique_ptr<clientChannel> openEvents(const QByteArray &configuration = {}) const;

    /// Waits until the daemon ends by itself; its exit status, or -1 when it crashed or stays. What it was is
    /// then the test's business.
    int waitForEnd();
    bool isRunning();

private:
    void end();

    QString m_identifier = newIdentifier();
    QTemporaryDir m_directory;
    childProcess m_process;
    ports m_ports;
    bool m_endsOnRequest;
    bool m_endWasSeen = false;
};
