#pragma once

#include "server/handlers.h"
#include "server/receiver.h"

#include <memory>
#include <string_view>

/// A daemon inside the fuzzer's process, on the offscreen platform: both servers, a client with a command
/// and an event channel on real sockets, and a user who can do a few things. What an input leaves behind ends
/// with its session, apart from the settings, which are put back.
class daemonSession
{
public:
    /// Prepares the process; once, before the first session.
    static void prepareProcess();

    daemonSession();
    ~daemonSession();
    Q_DISABLE_COPY_MOVE(daemonSession)

    void sendCommands(std::string_view bytes);
    void sendOnEventChannel(std::string_view bytes);
    /// Hangs the event channel up, or connects a new one.
    void toggleEventChannel();

    /// Clicks the first button of the newest box.
    void acceptBox();
    /// Closes the oldest box.
    void rejectBox();
    /// Clicks the buttons of the dialog that are shown.
    void clickButtons();
    void pressBusyWindow();
    /// A second of the dialog's clock goes by.
    void tick();

private:
    static int connectTo(int port);
    static void hangUp(int &channel);
    void send(int channel, std::string_view bytes);
    void turn();

    std::unique_ptr<handlers> m_handlers;
    std::unique_ptr<receiver> m_commandServer;
    std::unique_ptr<receiver> m_eventServer;
    int m_commands;
    int m_events;
};
