#pragma once

#include "progressctl/pipeInput.h"
#include "progressctl/pipeWindow.h"
#include "progressctl/terminalLine.h"
#include "progressctl/writer.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

/// Shows what a writer says about its progress. Reads as fast as the writer writes, and tells the daemon the
/// newest at most 25 times a second.
class progressPipe
{
public:
    progressPipe(const commonOptions &common, const pipeOptions &options);

    /// To the end of the input, or until something else ends it; gives the exit status.
    int run();

private:
    using clock = std::chrono::steady_clock;

    void openWindow();
    std::string openTerminal();
    void closeWindow(pipeWindow::result how);
    void loseWindow(const char *why);

    void watch();
    void takeTurn();
    void tendWindow(short events);
    void showNews();
    void readInput();
    void endInput();
    void handleSignal();
    pipeContent wanted() const;
    std::string wantedText() const;
    bool hasNews() const { return (m_window || m_terminal) && !(wanted() == m_shown); }
    int waitingTime() const;
    int percent() const { return m_reading.percent().value_or(m_options.percentage); }
    void waitForOk();
    int finalStatus();
    int cancelledStatus();
    int endedStatus();

    const commonOptions &m_common;
    const pipeOptions &m_options;
    std::unique_ptr<pipeWindow> m_window; ///< none once it is closed or lost, or could not be had
    std::unique_ptr<terminalLine> m_terminal;
    std::unique_ptr<writer> m_writer;
    int m_input = 0;
    descriptor m_signals;
    int m_signal = 0;
    std::optional<pipeEnd> m_end; ///< none while it goes on
    bool m_waitsForOk = false;
    std::optional<int> m_endedStatus; ///< what the end of the input has come to
    pipeInput m_reading;
    pipeContent m_shown;
    const int m_parent; ///< who has called this program
    clock::time_point m_started;
    clock::time_point m_stoodStill; ///< until then there was nothing to estimate by
    deadline m_timeLimit{progressClient::unlimited};
    deadline m_nextShow = deadline::now();
    deadline m_nextLook = deadline::now();
};
