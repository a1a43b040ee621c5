#pragma once

#include <QString>

#include <systemd/sd-bus.h>

#include <memory>

/// The user's session bus, to tell other programs something. Nothing is heard, and nothing waits once it is
/// open; without a bus, or after its end, what is told goes nowhere.
class sessionBus
{
public:
    static sessionBus &instance();

    /// To be called before the toolkit comes up. A bus that does not answer soon is none, for the toolkit,
    /// too, which would wait half a minute for it.
    void open();

    /// What launchers and taskbars show of the program: its progress, 0 to 100, or below 0 none, and whether
    /// it asks for the user.
    void updateLauncher(int percent, bool isUrgent);
    /// Shows a notification, one that stays until the user has seen it if it is urgent. It outlives the
    /// process.
    void notify(const QString &title, const QString &text, bool isUrgent);

private:
    struct closer {
        void operator()(sd_bus *bus) const { sd_bus_close_unref(bus); }
    };

    bool isReady();
    bool awaitReady();

    std::unique_ptr<sd_bus, closer> m_bus;
};
