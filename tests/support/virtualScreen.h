#pragma once

#include "tests/support/childProcess.h"

#include <QHash>
#include <QImage>
#include <QProcessEnvironment>
#include <QRect>
#include <QStringList>
#include <QTemporaryDir>

/// A virtual X server of the test's own, and what a user sees and does in front of it.
class virtualScreen
{
public:
    enum manager { withoutManager, withOpenbox };

    explicit virtualScreen(manager windowManager = withoutManager);

    /// For all processes that are started here later.
    void setVariable(const QString &name, const QString &value) { m_variables.insert(name, value); }
    /// Makes a process that is started later show itself here.
    QProcessEnvironment environment() const;
    /// Runs a program on the screen; returns what it printed.
    QByteArray run(const QString &program, const QStringList &arguments) const;
    /// Runs xdotool with arguments between blanks.
    QByteArray xdotool(const QString &arguments) const { return run("xdotool", arguments.split(' ')); }

    // Keys and clicks go through the X server, as those of a real user. Keys by name: "Return", "shift+Tab".
    void key(const QString &keys) const { xdotool("key " + keys); }
    void click(QPoint place) const;
    void drag(QPoint from, QPoint to) const;

    struct window {
        quint64 id = 0;
        QRect area;
    };
    /// The daemons' mapped windows with exactly this title; one without any has the title "progressd".
    QList<window> windows(const QString &title) const;
    bool shows(const QString &title) const { return !windows(title).isEmpty(); }
    /// Waits until exactly one window with this title is shown, and returns it; one without id if that fails.
    window waitForWindow(const QString &title) const;
    /// The same, and waits until that window has the keyboard focus.
    window waitForFocus(const QString &title) const;

    QImage picture() const;

private:
    void startManager();

    // The window manager goes first.
    childProcess m_server;
    childProcess m_manager;
    QString m_display;
    QHash<QString, QString> m_variables;
    QTemporaryDir m_runtimeDirectory;
};
