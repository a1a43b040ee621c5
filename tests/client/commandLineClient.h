#pragma once

#include "tests/support/childProcess.h"
#include "tests/support/virtualScreen.h"

#include <QByteArray>
#include <QStringList>

/// Runs progressctl for a test: on the test's own screen, with the tree's daemon, under an identifier of its
/// own whose files go with it.
class commandLineClient
{
public:
    explicit commandLineClient(const virtualScreen &screen);
    ~commandLineClient();

    struct result {
        int status = -1; ///< -1: it did not end in order
        QByteArray output;
        QByteArray errors;
    };
    result run(const QStringList &arguments, const QByteArray &input = {}) const;
    /// Prepares a process for a test that wants to start it by itself.
    void prepare(QProcess &process, const QStringList &arguments) const;
    /// Runs a bash script that finds progressctl in its PATH.
    void prepareScript(QProcess &process, const QString &script) const;

    QString identifier() const { return m_identifier; }

private:
    QString m_identifier;
    QProcessEnvironment m_environment;
};
