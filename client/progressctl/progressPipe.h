#pragma once

#include "client/progressClient.h"
#include "client/progressctl/hearingCheck.h"
#include "client/progressctl/pipeInput.h"
#include "client/progressctl/verbs.h"
#include "client/progressctl/writer.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct pipeOptions {
    std::string title = "Progress"; ///< of the window, if the daemon is started here
    std::string caption;            ///< of the bar; empty: the title
    std::string text;
    std::string theme;
    std::string cancelLabel = "Cancel";
    std::string okLabel = "OK";
    int slot = 0;
    int percentage = 0;
    bool isModal = false;
    bool hasCancel = true;
    bool autoClose = false;
    bool autoKill = false;
    bool waitForOk = false;
    bool showsRemaining = false;
    bool expectsComplete = false;
    int cancelStatus = 1;
    double timeoutSeconds = 0; ///< 0: none
    std::vector<std::string> command;
};

/// Shows what a writer says about its progress. Uses the running daemon, or starts one of its own and ends it
/// at the end. Reads as fast as the writer writes, and tells the daemon the newest at most 25 times a second.
class progressPipe
{
public:
    progressPipe(const commonOptions &common, const pipeOptions &options);
    ~progressPipe();

    /// To the end of the input, or until something else ends it; gives the exit status.
    int run();

private:
    using clock = std::chrono::steady_clock;
    enum class state { running, inputEnded, cancelled, full, timedOut, interrupted, daemonGone };

    void openWindow();
    void startOwnDaemon(progressClient::channels wanted);
    void showContent();
    void closeWindow(bool isWorthLearning);
    void loseWindow(const char *why);

    state watch();
    void wait();
    void tendWindow(short events, short commands);
    void readInput();
    void endInput();
    void handleEvent(const progressClient::event &event);
    void handleSignal();
    void show();
    void showPercent(int percent);
    void showText(std::string text);
    std::string wantedText() const;
    bool hasNews() const;
    int waitingTime() const;
    clock::time_point timeLimit() const;
    state waitForOk();
    int finalStatus(state ending);
    int cancelledStatus();

    int textSlot() const
    {
        return m_options.slot < progressClient::slots - 1 ? m_options.slot + 1 : m_options.slot - 1;
    }

    const commonOptions &m_common;
    const pipeOptions &m_options;
    std::optional<progressClient> m_client; ///< none once the window is closed or lost
    bool m_ownsDaemon = false;
    std::unique_ptr<processHandle> m_daemon; ///< the own one
    std::unique_ptr<writer> m_writer;
    int m_input = 0;
    int m_signals = -1;
    int m_signal = 0;
    state m_state = state::running;
    bool m_waitsForOk = false;
    pipeInput m_reading;
    hearingCheck m_hearing;
    int m_shownPercent = 0;
    std::string m_shownText;
    bool m_textIsShown = false;
    int m_daemonEstimate = -1; ///< remaining seconds, or -1
    clock::time_point m_started;
    clock::time_point m_nextShow;
};
