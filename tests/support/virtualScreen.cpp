#include "tests/support/virtualScreen.h"

#include <QRegularExpression>
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
                    QStringLiteral("0"), mode, QStringLiteral("-nolisten"), QStringLiteral("tcp")});
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
    const QString name = QLatin1Char('^') + QRegularExpression::escape(title) + QLatin1Char('$');
    const QByteArray found =
        run(QStringLiteral("xdotool"),
            {QStringLiteral("search"), QStringLiteral("--onlyvisible"), QStringLiteral("--name"), name,
             QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"), QStringLiteral("%@")});
    QList<window> windows;
    for (const QByteArray &line : found.split('\n')) {
        const int value = line.mid(line.indexOf('=') + 1).toInt();
        if (line.startsWith("WINDOW="))
            windows.append(window{line.mid(7).toULongLong(), QRect()});
        else if (line.startsWith("X="))
            windows.last().area.moveLeft(value);
        else if (line.startsWith("Y="))
            windows.last().area.moveTop(value);
        else if (line.startsWith("WIDTH="))
            windows.last().area.setWidth(value);
        else if (line.startsWith("HEIGHT="))
            windows.last().area.setHeight(value);
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

QImage virtualScreen::picture() const
{
    return QImage::fromData(
        run(QStringLiteral("import"), {QStringLiteral("-silent"), QStringLiteral("-window"),
                                       QStringLiteral("root"), QStringLiteral("ppm:-")}),
        "PPM");
}
