#pragma once

#include "tests/support/childProcess.h"
#include "tests/support/virtualScreen.h"

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
    /// Runs progressctl with arguments between blanks; what holds a blank stands in double quotes.
    result run(const QString &arguments) const;
    /// Runs a bash script that finds progressctl in its PATH.
    result runScript(const QString &script) const;

    // The same for a test that goes on meanwhile.
    void start(childProcess &process, const QString &arguments) const;
    void startScript(childProcess &process, const QString &script) const;
    static result resultOf(childProcess &process);

    QString identifier() const { return m_identifier; }

private:
    QString m_identifier;
    QProcessEnvironment m_environment;
};
