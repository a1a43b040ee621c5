#include "progressctl/progressPipe.h"

#include "progressctl/texts.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace
{

using error = progressClient::error;

constexpr std::chrono::milliseconds showInterval{40};
constexpr std::chrono::milliseconds secondsTick{1000};

/// Signals that are to take the window away before they end the program.
sigset_t endingSignals()
{
    sigset_t set;
    ::sigemptyset(&set);
    for (const int each : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction now = {};
        // Under nohup, or in the background of a script, some are meant to be ignored.
        if (::sigaction(each, nullptr, &now) == 0 && now.sa_handler != SIG_IGN)
            ::sigaddset(&set, each);
    }
    return set;
}

bool hasDisplay()
{
    constexpr const char *names[] = {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"};
    return std::ranges::any_of(names, [](const char *name) { return !environment(name).empty(); });
}

} // namespace

progressPipe::progressPipe(const commonOptions &common, const pipeOptions &options)
    : m_common(common), m_options(options), m_reading(options.bars.size()), m_parent(::getppid())
{
    if (options.isGauge)
        m_reading.expectBlocks();
    sigset_t set = endingSignals();
    m_signals = descriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    // What nobody reads any more ends no job. Were it ignored, the command would ignore it, too.
    ::sigaddset(&set, SIGPIPE);
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
}

int progressPipe::run()
{
    openWindow();
    if (!m_options.command.empty()) {
        m_writer = std::make_unique<writer>(m_options.command);
        m_input = m_writer->output();
    }
    m_started = m_stoodStill = clock::now();
    m_timeLimit = deadline(timeoutOf(m_options.timeoutSeconds));
    watch();
    if (m_end == pipeEnd::inputEnded && m_options.staysOpen() && m_window && !m_terminal)
        waitForOk();
    const int status = finalStatus();
    if (m_terminal && status == statusOk)
        m_terminal->show(wanted(), -1);
    m_terminal.reset();
    using result = pipeWindow::result;
    const bool isCancelled = m_end == pipeEnd::cancelled && !m_waitsForOk;
    closeWindow(isCancelled ? result::cancelled : status == statusOk ? result::learned : result::failed);
    if (m_end == pipeEnd::interrupted) {
        const sigset_t set = endingSignals();
        ::signal(m_signal, SIG_DFL);
        ::raise(m_signal);
        ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
    }
    return status;
}

// The window.

/// A command is not left out because it cannot be watched.
void progressPipe::openWindow()
{
    try {
        if (m_options.usesTerminal.value_or(
                !hasDisplay() && !progressClient::isRunning(m_common.identifier, m_common.limit()))) {
            if (const std::string why = openTerminal(); !why.empty())
                complain(why);
            return;
        }
        m_window = std::make_unique<pipeWindow>(m_common, m_options, pipeWindow::place::screen);
    } catch (const error &problem) {
        // Where a daemon starts without a display, the display is one that cannot be reached.
        if (problem.why() == error::reason::cannotStart && !m_options.usesTerminal && openTerminal().empty())
            return;
        m_terminal.reset();
        if (m_options.command.empty())
            throw;
        complain("no window (" + std::string(problem.what()) + "), the command runs without one");
    }
}

/// Gives why there is no daemon, which learns how long it takes. Without one the line is still worth having.
std::string progressPipe::openTerminal()
{
    m_terminal = std::make_unique<terminalLine>();
    try {
        m_window = std::make_unique<pipeWindow>(m_common, m_options, pipeWindow::place::nowhere);
        return {};
    } catch (const error &problem) {
        return problem.what();
    }
}

void progressPipe::closeWindow(pipeWindow::result how)
{
    if (!m_window)
        return;
    try {
        if (how == pipeWindow::result::learned)
            m_window->show(wanted());
        m_window->close(how);
    } catch (const error &problem) {
        complain(problem.what());
    }
    m_window.reset();
}

/// A command goes on without its window, and so does the terminal's line.
void progressPipe::loseWindow(const char *why)
{
    complain(why);
    m_window.reset();
    if (m_waitsForOk || (!m_writer && !m_terminal))
        m_end = pipeEnd::windowGone;
}

// The loop.

/// Until the input ends or something else does.
void progressPipe::watch()
{
    m_end.reset();
    while (!m_end)
        takeTurn();
}

void progressPipe::takeTurn()
{
    const bool commandRuns = m_writer && !m_writer->handle().hasEnded();
    if (m_input < 0 && !commandRuns && !m_waitsForOk) {
        m_end = pipeEnd::inputEnded;
        return;
    }
    const bool isDue = hasNews() && m_nextShow.isOver();
    const short windowEvents = isDue ? POLLIN | POLLOUT : POLLIN;
    if (isDue && !m_window)
        showNews();
    pollfd fds[] = {{m_input, POLLIN, 0},
                    {m_signals.get(), POLLIN, 0},
                    {commandRuns ? m_writer->handle().fd() : -1, POLLIN, 0},
                    {m_window ? m_window->fd() : -1, windowEvents, 0}};
    // What a command has left in its pipe is there at once.
    const bool inputIsLast = m_writer && !commandRuns && m_input >= 0;
    if (::poll(fds, std::size(fds), inputIsLast ? 0 : waitingTime()) < 0)
        return;
    if (fds[0].revents)
        readInput();
    else if (inputIsLast)
        endInput();
    if (m_window && !m_end)
        tendWindow(fds[3].revents);
    if (!m_end && m_timeLimit.isOver())
        m_end = pipeEnd::timedOut;
    if (fds[1].revents)
        handleSignal();
}

/// Given what poll has found at the window.
void progressPipe::tendWindow(short events)
{
    try {
        if (events & ~POLLOUT)
            m_end = m_window->handleEvents();
        if (m_end)
            return;
        // With each event the time that is left may be another one.
        if (events != 0)
            showNews();
        // A daemon that is stopped keeps its channels open and says nothing, as one does whose user takes
        // time.
        if (m_waitsForOk && m_nextLook.isOver()) {
            m_window->checkAlive();
            m_nextLook = deadline(m_common.limit() / 2);
        }
    } catch (const error &problem) {
        loseWindow(problem.what());
    }
}

void progressPipe::showNews()
{
    if (m_terminal)
        m_terminal->show(wanted(), m_window ? m_window->remainingSeconds() : -1);
    if (!m_nextShow.isOver())
        return;
    m_nextShow = deadline(showInterval);
    m_shown = wanted();
    if (!m_window)
        return;
    m_window->show(m_shown);
    if (m_reading.wasFull() && m_options.staysOpen())
        m_window->offerOk();
}

/// How long poll may wait, in milliseconds; -1 for ever.
int progressPipe::waitingTime() const
{
    deadline next = m_timeLimit;
    // What is due waits for the window to take it.
    if (hasNews() && !m_nextShow.isOver())
        next = deadline::earlier(next, m_nextShow);
    if (m_window && m_waitsForOk)
        next = deadline::earlier(next, m_nextLook);
    else if (m_window && m_options.showsRemaining)
        next = deadline::earlier(next, deadline(secondsTick));
    return next.leftForPoll();
}

void progressPipe::readInput()
{
    static char buffer[64 * 1024];
    const ssize_t got = ::read(m_input, buffer, sizeof buffer);
    if (got > 0)
        m_reading.feed({buffer, static_cast<std::size_t>(got)});
    else if (got == 0)
        endInput();
    else if (errno != EINTR && errno != EAGAIN) {
        complain(systemText("the input cannot be read"));
        m_end = pipeEnd::inputFailed;
    }
    if (percent() < 1)
        m_stoodStill = clock::now();
    if (!m_options.autoClose || !m_window || !m_reading.wasFull())
        return;
    if (m_writer)
        closeWindow(pipeWindow::result::learned);
    else
        m_end = pipeEnd::inputEnded;
}

void progressPipe::endInput()
{
    m_reading.end();
    m_input = -1;
}

void progressPipe::handleSignal()
{
    signalfd_siginfo about{};
    if (::read(m_signals.get(), &about, sizeof about) != static_cast<ssize_t>(sizeof about))
        return;
    if (m_terminal && about.ssi_signo == SIGINT) {
        m_end = pipeEnd::cancelled;
        return;
    }
    m_signal = static_cast<int>(about.ssi_signo);
    m_end = pipeEnd::interrupted;
    if (m_writer)
        m_writer->handle().signal(m_signal);
}

// What is shown.

pipeContent progressPipe::wanted() const
{
    pipeContent made;
    const bool isDone = m_waitsForOk && m_endedStatus == statusOk;
    const std::vector<std::string> captions = m_options.captions();
    for (std::size_t i = 0; i < captions.size(); ++i) {
        const pipeInput::barWords &said = m_reading.bars()[i];
        const std::string separator = said.text.empty() || captions[i].empty() ? "" : ": ";
        const int start = i == 0 ? m_options.percentage : 0;
        made.bars.push_back(
            {isDone ? 100 : said.percent.value_or(start), captions[i] + separator + said.text});
    }
    made.pulsates =
        !m_waitsForOk && made.bars[0].percent < 100 && m_reading.pulsates().value_or(m_options.pulsates);
    made.text = wantedText();
    made.amount = m_options.amount > 0 ? m_options.amount : m_reading.amount();
    return made;
}

std::string progressPipe::wantedText() const
{
    std::string text = withoutEscapes(m_reading.text().value_or(m_options.text));
    const bool isDrawn = m_window && !m_terminal && m_window->drawsMarkup();
    if (m_options.hasMarkup && !isDrawn)
        text = withoutMarkup(text);
    // The daemon shows its estimate itself, as soon as it has one; a text that stood until then would flash.
    constexpr std::chrono::milliseconds patience{2500};
    const auto now = clock::now();
    if (!m_options.showsRemaining || m_waitsForOk || !m_window || m_window->remainingSeconds() >= 0 ||
        now - m_stoodStill < patience || percent() < 1)
        return text;
    const std::chrono::duration<double> elapsed = now - m_started;
    const std::string left =
        translatedRemaining(std::llround(elapsed.count() * (100 - percent()) / percent()));
    return text.empty() ? left : text + " (" + left + ')';
}

// The end.

/// The run ends with the input: nothing is learned of the waiting.
void progressPipe::waitForOk()
{
    try {
        m_window->show(wanted());
        m_window->offerOk();
        m_window->endRun(endedStatus() == statusOk ? pipeWindow::result::learned
                                                   : pipeWindow::result::failed);
        m_waitsForOk = true;
        m_window->show(wanted());
    } catch (const error &problem) {
        loseWindow(problem.what());
        return;
    }
    watch();
}

int progressPipe::finalStatus()
{
    switch (*m_end) {
    case pipeEnd::cancelled:
        return cancelledStatus();
    case pipeEnd::pressedOther:
        if (m_window->pressedButton().status != pipeButton::printsLabel)
            return m_window->pressedButton().status;
        std::printf("%s\n", m_window->pressedButton().label.c_str());
        return statusRejected;
    case pipeEnd::timedOut:
        return statusTimedOut;
    case pipeEnd::windowGone:
        return m_writer ? endedStatus() : statusGone;
    case pipeEnd::interrupted:
        return 128 + m_signal;
    case pipeEnd::inputFailed:
        return statusFile;
    case pipeEnd::accepted:
    case pipeEnd::inputEnded:
        break;
    }
    return endedStatus();
}

/// Of a command, which has ended or closed its output, its own.
int progressPipe::endedStatus()
{
    if (m_endedStatus)
        return *m_endedStatus;
    m_endedStatus = m_writer ? m_writer->exitStatus() : statusOk;
    if (*m_endedStatus == statusOk && m_options.expectsComplete && percent() < 100) {
        complain("the input ended at " + std::to_string(percent()) + " percent");
        m_endedStatus = statusIncomplete;
    }
    return *m_endedStatus;
}

/// A command that has ended already has its own status.
int progressPipe::cancelledStatus()
{
    if (m_writer && m_waitsForOk)
        return endedStatus();
    if (m_options.autoKill && m_writer) {
        m_writer->endAll();
        m_writer->handle().waitForEnd(deadline(m_common.limit()));
    } else if (m_options.autoKill && m_parent > 1 && m_parent == ::getppid()) {
        ::kill(m_parent, SIGHUP);
    }
    return m_options.cancelStatus;
}
