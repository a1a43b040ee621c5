#include "tests/support/virtualScreen.h"

#include <QTest>

virtualScreen::virtualScreen(manager windowManager, QSize size)
{
    startServer(size);
    if (windowManager == withOpenbox)
        startManager();
}

void virtualScreen::startServer(QSize size)
{
    const QString mode = QStringLiteral("%1x%2x24").arg(size.width()).arg(size.height());
    m_server.setStandardErrorFile(QProcess::nullDevice());
    m_server.start(QStringLiteral("Xvfb"),
                   {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                    QStringLiteral("0"), mode, QStringLiteral("-nolisten"), QStringLiteral("tcp"),
                    // A server that resets when its last client goes would hang up on the next one.
                    QStringLiteral("-noreset")});
    while (!m_server.canReadLine() && m_server.waitForReadyRead(patienceMs)) {
    }
    if (!m_server.canReadLine())
        qFatal("Xvfb does not start: %s", qPrintable(m_server.errorString()));
    m_display = QLatin1Char(':') + QString::fromLatin1(m_server.readLine().trimmed());
}

void virtualScreen::startManager()
{
    m_manager.setProcessEnvironment(environment());
    m_manager.setStandardErrorFile(QProcess::nullDevice());
    m_manager.setStandardOutputFile(QProcess::nullDevice());
    m_manager.start(QStringLiteral("openbox"), {QStringLiteral("--sm-disable")});
    const bool manages = QTest::qWaitFor(
        [this] {
            return run(QStringLiteral("xprop"),
                       {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")})
                .contains("window id");
        },
        patienceMs);
    if (!manages)
        qFatal("openbox does not start: %s", qPrintable(m_manager.errorString()));
}

QProcessEnvironment virtualScreen::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), m_display);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_runtimeDirectory.path());
    for (const char *name : {"QT_QPA_PLATFORM", "WAYLAND_DISPLAY", "XAUTHORITY", "SESSION_MANAGER"})
        environment.remove(QLatin1String(name));
    return environment;
}

QByteArray virtualScreen::run(const QString &program, const QStringList &arguments,
                              const QByteArray &input) const
{
    childProcess process;
    process.setProcessEnvironment(environment());
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(patienceMs))
        qFatal("%s: %s", qPrintable(program), qPrintable(process.errorString()));
    return process.readAllStandardOutput();
}

void virtualScreen::key(const QString &keys) const
{
    run(QStringLiteral("xdotool"), {QStringLiteral("key"), keys});
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

QStringList moveTo(QPoint at)
{
    return {QStringLiteral("mousemove"), QString::number(at.x()), QString::number(at.y())};
}

} // namespace

void virtualScreen::click(QPoint at) const
{
    run(QStringLiteral("xdotool"), moveTo(at) << QStringLiteral("click") << QStringLiteral("1"));
}

void virtualScreen::doubleClick(QPoint at) const
{
    run(QStringLiteral("xdotool"), moveTo(at) << QStringLiteral("click") << QStringLiteral("--repeat")
                                              << QStringLiteral("2") << QStringLiteral("--delay")
                                              << QStringLiteral("20") << QStringLiteral("1"));
}

void virtualScreen::drag(QPoint from, QPoint to) const
{
    run(QStringLiteral("xdotool"), moveTo(from) << QStringLiteral("mousedown") << QStringLiteral("1")
                                                << moveTo((from + to) / 2) << moveTo(to)
                                                << QStringLiteral("mouseup") << QStringLiteral("1"));
}

QList<virtualScreen::window> virtualScreen::windows(const QString &title) const
{
    const QByteArray ids =
        run(QStringLiteral("xdotool"), {QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                                        QStringLiteral("--class"), QStringLiteral("^progressd$")});
    QList<window> windows;
    for (const QByteArray &id : ids.split('\n')) {
        if (id.isEmpty())
            continue;
        // (xdotool does not see every title, and gets the place of a window with a frame wrong.)
        const QByteArray facts =
            run(QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::fromLatin1(id)});
        if (facts.contains(" \"" + title.toLocal8Bit() + "\"\n"))
            windows.append(window{id.toULongLong(), areaIn(facts)});
    }
    return windows;
}

virtualScreen::window virtualScreen::waitForWindow(const QString &title) const
{
    QList<window> found;
    const bool one = QTest::qWaitFor(
        [&] {
            found = windows(title);
            return found.size() == 1;
        },
        patienceMs);
    return one ? found.constFirst() : window{};
}

bool virtualScreen::waitForFocus(const window &wanted) const
{
    const auto hasFocus = [&] {
        return run(QStringLiteral("xdotool"), {QStringLiteral("getwindowfocus")}).toULongLong() == wanted.id;
    };
    return wanted.id != 0 && QTest::qWaitFor(hasFocus, patienceMs);
}

QImage virtualScreen::picture() const
{
    return QImage::fromData(
        run(QStringLiteral("import"), {QStringLiteral("-silent"), QStringLiteral("-window"),
                                       QStringLiteral("root"), QStringLiteral("ppm:-")}),
        "PPM");
}
