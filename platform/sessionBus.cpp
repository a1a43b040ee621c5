#include "platform/sessionBus.h"

#include <chrono>
#include <cstdlib>

namespace
{

using namespace std::chrono_literals;
using clock = std::chrono::steady_clock;

constexpr auto patience = 500ms;
/// Messages that may wait for a bus that has stopped reading.
constexpr uint64_t mostUnsent = 8;

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
    if (!m_bus || !awaitReady())
        close();
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

void sessionBus::close()
{
    m_bus.reset();
    setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
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

void sessionBus::notify(const QString &title, const QString &text, bool isUrgent)
{
    constexpr int normal = 1;
    constexpr int critical = 2;
    if (isReady())
        sd_bus_call_method_async(m_bus.get(), nullptr, "org.freedesktop.Notifications",
                                 "/org/freedesktop/Notifications", "org.freedesktop.Notifications", "Notify",
                                 nullptr, nullptr, "susssasa{sv}i", "progressd", 0U, "progressd",
                                 title.toUtf8().constData(), text.toUtf8().constData(), 0, 2, "desktop-entry",
                                 "s", "progressd", "urgency", "y", isUrgent ? critical : normal, -1);
}
