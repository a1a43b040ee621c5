#include "tests/support/virtualScreen.h"

#include <QTest>

virtualScreen::virtualScreen(manager windowManager)
{
    m_server.setStandardErrorFile(QProcess::nullDevice());
    // A server that resets when its last client goes would hang up on the next one.
    m_server.start("Xvfb", {"-displayfd", "1", "-screen", "0", "800x600x24", "-nolisten", "tcp", "-noreset"});
    while (!m_server.canReadLine() && m_server.waitForReadyRead(patienceMs)) {
    }
    if (!m_server.canReadLine())
        qFatal("Xvfb does not start: %s", qPrintable(m_server.errorString()));
    m_display = ':' + m_server.readLine().trimmed();
    if (windowManager == withOpenbox)
        startManager();
}

void virtualScreen::startManager()
{
    m_manager.setProcessEnvironment(environment());
    m_manager.setStandardErrorFile(QProcess::nullDevice());
    m_manager.setStandardOutputFile(QProcess::nullDevice());
    m_manager.start("openbox", {"--sm-disable"});
    const auto manages = [this] {
        return run("xprop", {"-root", "_NET_SUPPORTING_WM_CHECK"}).contains("window id");
    };
    if (!QTest::qWaitFor(manages, patienceMs))
        qFatal("openbox does not start: %s", qPrintable(m_manager.errorString()));
}

QProcessEnvironment virtualScreen::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", m_display);
    environment.insert("XDG_RUNTIME_DIR", m_runtimeDirectory.path());
    for (const char *name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER"})
        environment.remove(name);
    for (auto variable = m_variables.cbegin(); variable != m_variables.cend(); ++variable)
        environment.insert(variable.key(), variable.value());
    return environment;
}

QByteArray virtualScreen::run(const QString &program, const QStringList &arguments) const
{
    childProcess process;
    process.setProcessEnvironment(environment());
    process.start(program, arguments);
    process.closeWriteChannel();
    if (!process.waitForFinished(patienceMs))
        qFatal("%s: %s", qPrintable(program), qPrintable(process.errorString()));
    return process.readAllStandardOutput();
}

namespace
{

/// The area of a window in what xwininfo tells about it.
QRect areaIn(const QByteArray &facts)
{
    const auto fact = [&facts](const QByteArray &name) {
        const qsizetype at = facts.indexOf(name) + name.size();
        return facts.mid(at, facts.indexOf('\n', at) - at).toInt();
    };
    return {fact("Absolute upper-left X:"), fact("Absolute upper-left Y:"), fact("Width:"), fact("Height:")};
}

QString at(QPoint place)
{
    return QStringLiteral("mousemove %1 %2").arg(place.x()).arg(place.y());
}

} // namespace

void virtualScreen::click(QPoint place) const
{
    xdotool(at(place) + " click 1");
}

void virtualScreen::drag(QPoint from, QPoint to) const
{
    xdotool(at(from) + " mousedown 1 " + at((from + to) / 2) + ' ' + at(to) + " mouseup 1");
}

QList<virtualScreen::window> virtualScreen::windows(const QString &title) const
{
    const QByteArray ids = xdotool("search --onlyvisible --class ^progressd$");
    QList<window> windows;
    for (const QByteArray &id : ids.split('\n')) {
        if (id.isEmpty())
            continue;
        // (xdotool does not see every title, and gets the place of a window with a frame wrong.)
        const QByteArray facts = run("xwininfo", {"-id", id});
        if (facts.contains(" \"" + title.toLocal8Bit() + "\"\n"))
            windows.append(window{id.toULongLong(), areaIn(facts)});
    }
    return windows;
}

virtualScreen::window virtualScreen::waitForWindow(const QString &title) const
{
    QList<window> found;
    const auto isOne = [&] {
        found = windows(title);
        return found.size() == 1;
    };
    return QTest::qWaitFor(isOne, patienceMs) ? found.constFirst() : window{};
}

virtualScreen::window virtualScreen::waitForFocus(const QString &title) const
{
    const window wanted = waitForWindow(title);
    const auto hasFocus = [&] { return xdotool("getwindowfocus").toULongLong() == wanted.id; };
    return wanted.id != 0 && QTest::qWaitFor(hasFocus, patienceMs) ? wanted : window{};
}

QImage virtualScreen::picture() const
{
    return QImage::fromData(run("import", {"-silent", "-window", "root", "ppm:-"}), "PPM");
}
