#include "platform/sessionBus.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <csignal>
#include <cstdlib>

namespace
{

using namespace std::chrono_literals;
using clock = std::chrono::steady_clock;

constexpr auto patience = 500ms;
/// Messages that may wait for a bus that has stopped reading.
constexpr uint64_t mostUnsent = 8;
/// Seconds in which a server of notifications has to be there, which the bus may have to start first.
constexpr unsigned longestNotification = 10;

/// The end of the process, after a notification. No client's channel stays open for it.
[[noreturn]] void notifyAndEnd(const char *title, const char *text, bool isUrgent)
{
    constexpr int normal = 1;
    constexpr int critical = 2;
    for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGALRM})
        std::signal(number, SIG_DFL);
    alarm(longestNotification);
    close_range(0, UINT_MAX, 0);
    sd_bus *bus = nullptr;
    if (sd_bus_open_user(&bus) >= 0)
        sd_bus_call_method(bus, "org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                           "org.freedesktop.Notifications", "Notify", nullptr, nullptr, "susssasa{sv}i",
                           "Progress", 0U, "progressd", title, text, 0, 1, "urgency", "y",
                           isUrgent ? critical : normal, -1);
    _exit(EXIT_SUCCESS);
}

} // namespace

sessionBus &sessionBus::instance()
{
    static sessionBus bus;
    return bus;
}

void sessionBus::open()
{
    sd_bus *bus = nullptr;
    if (sd_bus_open_user(&bus) >= 0)
        m_bus.reset(bus);
    if (awaitReady())
        return;
    m_bus.reset();
    setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
}

bool sessionBus::awaitReady()
{
    const auto deadline = clock::now() + patience;
    while (isReady() && sd_bus_is_ready(m_bus.get()) == 0) {
        const auto left = std::chrono::duration_cast<std::chrono::microseconds>(deadline - clock::now());
        if (left <= 0us || sd_bus_wait(m_bus.get(), static_cast<uint64_t>(left.count())) < 0)
            return false;
    }
    return m_bus != nullptr;
}

/// Takes what has come, and sends what is left. False without a bus, and where it reads nothing.
bool sessionBus::isReady()
{
    int result = m_bus ? 1 : 0;
    while (result > 0)
        result = sd_bus_process(m_bus.get(), nullptr);
    if (result < 0)
        m_bus.reset();
    uint64_t unsent = 0;
    return m_bus && sd_bus_get_n_queued_write(m_bus.get(), &unsent) >= 0 && unsent < mostUnsent;
}

void sessionBus::updateLauncher(int percent, bool isUrgent)
{
    if (isReady())
        sd_bus_emit_signal(m_bus.get(), "/com/canonical/unity/launcherentry/progressd",
                           "com.canonical.Unity.LauncherEntry", "Update", "sa{sv}",
                           "application://progressd.desktop", 3, "progress", "d",
                           percent < 0 ? 0.0 : percent / 100.0, "progress-visible", "b", percent >= 0,
                           "urgent", "b", isUrgent);
}

/// By a process that belongs to nobody. The daemon may be about to end: a bus that has yet to start the
/// server passes nothing on of who has gone by then, and there are desktops that take a notification away
/// with the program from which it is, which they know by its window, its name or its desktop file.
void sessionBus::notify(const QString &title, const QString &text, bool isUrgent)
{
    const QByteArray summary = title.toUtf8();
    const QByteArray body = text.toUtf8();
    const pid_t between = isReady() ? fork() : -1;
    if (between == 0) {
        if (fork() == 0)
            notifyAndEnd(summary.constData(), body.constData(), isUrgent);
        _exit(EXIT_SUCCESS);
    }
    if (between > 0)
        waitpid(between, nullptr, 0);
}
