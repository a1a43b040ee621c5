#pragma once

#include "tests/support/childProcess.h"

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

    explicit virtualScreen(manager windowManager = withoutManager, QSize size = {800, 600});

    /// Makes a process that is started later show itself here.
    QProcessEnvironment environment() const;
    /// Runs a program on the screen; returns what it printed.
    QByteArray run(const QString &program, const QStringList &arguments, const QByteArray &input = {}) const;

    // Keys and clicks go through the X server, as those of a real user. Keys by name: "Return", "shift+Tab".
    void key(const QString &keys) const;
    void click(QPoint at) const;
    void doubleClick(QPoint at) const;
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

    /// Waits until the window has the keyboard focus.
    bool waitForFocus(const window &wanted) const;

    QImage picture() const;

private:
    void startServer(QSize size);
    void startManager();

    // The window manager goes first.
    childProcess m_server;
    childProcess m_manager;
    QString m_display;
    QTemporaryDir m_runtimeDirectory;
};
