#pragma once

#include "progressctl/pipeWindow.h"
#include "wire/calmTime.h"

#include <chrono>
#include <string>

/// Progress without a window, on standard error: one line that is drawn again where that is a terminal, else
/// a plain line at a change of the text and at each tenth.
class terminalLine
{
public:
    terminalLine();
    /// Leaves the line as it is, and no progress in the terminal's own places.
    ~terminalLine();
    terminalLine(const terminalLine &) = delete;
    terminalLine &operator=(const terminalLine &) = delete;

    /// `remainingSeconds` is -1 while it is unknown.
    void show(const pipeContent &content, int remainingSeconds);

private:
    std::string timeLeft(int seconds);
    void draw(const std::string &line, const pipeContent &content);
    void print(const pipeContent &content);

    const bool m_isTerminal;
    const bool m_takesProgress; ///< the terminal shows progress itself, told by the sequence OSC 9;4
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    wire::calmTime m_calm;
    std::string m_drawn;
    std::string m_printedText;
    int m_printedTenth = -1;
};
