#include "client/progressctl/progressPipe.h"

#include "client/progressctl/exitStatus.h"
#include "client/progressctl/remainingTime.h"
#include "client/progressctl/theme.h"
#include "client/waiting.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace
{

using error = progressClient::error;
using event = progressClient::event;

constexpr std::chrono::milliseconds showInterval{40};
constexpr std::chrono::milliseconds secondsTick{1000};
/// Pipes at the same time that have a daemon of their own.
constexpr int mostOwnDaemons = 20;

/// Signals that are to take the window away before they end the program.
sigset_t endingSignals()
{
    sigset_t set;
    ::sigemptyset(&set);
    for (const int each : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction now {
        };
        // Under nohup, or in the background of a script, some are meant to be ignored.
        if (::sigaction(each, nullptr, &now) == 0 && now.sa_handler != SIG_IGN)
            ::sigaddset(&set, each);
    }
    return set;
}

int millisecondsUntil(std::chrono::steady_clock::time_point when)
{
    const auto left = when - std::chrono::steady_clock::now();
    const auto rounded = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return static_cast<int>(std::clamp<long long>(rounded, 0, 1'000'000'000));
}

} // namespace

progressPipe::progressPipe(const commonOptions &common, const pipeOptions &options)
    : m_common(common), m_options(options)
{
    const sigset_t set = endingSignals();
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    m_signals = ::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

progressPipe::~progressPipe()
{
    ::close(m_signals);
}

int progressPipe::run()
{
    openWindow();
    if (!m_options.command.empty()) {
        m_writer = std::make_unique<writer>(m_options.command);
        m_input = m_writer->output();
    }
    m_started = clock::now();
    m_nextShow = m_started;
    state ending = watch();
    if (ending == state::inputEnded && m_options.waitForOk && m_client)
        ending = waitForOk();
    const int status = finalStatus(ending);
    closeWindow(status == statusOk);
    if (ending == state::interrupted) {
        const sigset_t set = endingSignals();
        ::signal(m_signal, SIG_DFL);
        ::raise(m_signal);
        ::sigprocmask(SIG_UNBLOCK, &set, nullptr);
    }
    return status;
}

// The window.

void progressPipe::openWindow()
{
    const bool listens = m_options.hasCancel || m_options.waitForOk || m_options.showsRemaining;
    const auto wanted = listens ? progressClient::channels::both : progressClient::channels::commands;
    if (const auto running = progressClient::findDaemon(m_common.identifier))
        m_client.emplace(*running, wanted, m_common.limit());
    else
        startOwnDaemon(wanted);
    showContent();
}

/// A daemon without a base port ends with its last client, however that ends. Each of several pipes at a time
/// has one; they are numbered, so that what they learn is found again.
void progressPipe::startOwnDaemon(progressClient::channels wanted)
{
    const themeEntries theme = loadTheme(m_options.theme);
    progressClient::daemonOptions options;
    options.program = daemonProgram();
    options.timeout = std::max(m_common.limit(), options.timeout);
    for (int number = 1; number <= mostOwnDaemons; ++number) {
        const std::string suffix = number == 1 ? "-pipe" : "-pipe-" + std::to_string(number);
        const auto started = progressClient::startDaemon(m_common.identifier + suffix, options);
        if (started.wasRunning)
            continue;
        m_ownsDaemon = true;
        m_daemon = std::make_unique<processHandle>(started.process);
        m_client.emplace(started.daemonPorts, wanted, m_common.limit());
        m_client->configure(
            {{"windowTitle", m_options.title}, {"windowModal", m_options.isModal ? "on" : "off"}});
        applyTheme(*m_client, theme);
        return;
    }
    throw failure(statusNoDaemon,
                  "too many pipes have daemons of their own; start one with \"progressctl start\"");
}

void progressPipe::showContent()
{
    m_client->createBar(m_options.slot, m_options.caption.empty() ? m_options.title : m_options.caption);
    if (m_options.percentage > 0)
        showPercent(m_options.percentage);
    if (!m_options.text.empty())
        showText(m_options.text);
    if (m_options.hasCancel)
        m_client->addButton(m_options.slot, m_options.cancelLabel);
}

/// `isWorthLearning` is false for a run that has failed: an own daemon then forgets it.
void progressPipe::closeWindow(bool isWorthLearning)
{
    if (!m_client)
        return;
    try {
        if (isWorthLearning)
            show();
        else if (m_ownsDaemon)
            m_client->messageStart();
        m_client->removeBar(m_options.slot);
        if (m_textIsShown)
            m_client->removeText(textSlot());
        if (m_options.hasCancel || m_options.waitForOk)
            m_client->removeButton(m_options.slot);
        if (m_ownsDaemon)
            m_client->exitDaemon();
        m_client->finish();
        if (m_ownsDaemon)
            m_daemon->waitForEnd(deadline(m_common.limit()));
    } catch (const error &problem) {
        complain(problem.what());
    }
    m_client.reset();
}

void progressPipe::loseWindow(const char *why)
{
    complain(why);
    m_client.reset();
    m_state = state::daemonGone;
}

// The loop.

/// Until the input ends or something else does. A command that runs here goes on without its window; then its
/// end counts.
progressPipe::state progressPipe::watch()
{
    for (;;) {
        wait();
        if (m_state == state::full && m_writer)
            closeWindow(true);
        const bool goesOn = m_state == state::running ||
                            (m_writer && (m_state == state::full || m_state == state::daemonGone));
        if (!goesOn)
            return m_state;
        m_state = state::running;
    }
}

void progressPipe::wait()
{
    const bool commandRuns = m_writer && !m_writer->handle().hasEnded();
    if (m_input < 0 && !commandRuns && !m_waitsForOk) {
        m_state = state::inputEnded;
        return;
    }
    const bool isDue = m_client && hasNews() && clock::now() >= m_nextShow;
    const short commandEvents = isDue ? POLLIN | POLLOUT : POLLIN;
    pollfd fds[] = {{m_input, POLLIN, 0},
                    {m_signals, POLLIN, 0},
                    {commandRuns ? m_writer->handle().fd() : -1, POLLIN, 0},
                    {m_client ? m_client->eventFd() : -1, POLLIN, 0},
                    {m_client ? m_client->commandFd() : -1, commandEvents, 0}};
    // What a command has left in its pipe is there at once.
    const bool inputIsLast = m_writer && !commandRuns && m_input >= 0;
    if (::poll(fds, std::size(fds), inputIsLast ? 0 : waitingTime()) < 0)
        return;
    if (fds[0].revents)
        readInput();
    else if (inputIsLast)
        endInput();
    if (m_client)
        tendWindow(fds[3].revents, fds[4].revents);
    if (m_options.timeoutSeconds > 0 && m_state == state::running && clock::now() >= timeLimit())
        m_state = state::timedOut;
    if (fds[1].revents)
        handleSignal();
}

/// Given what poll has found at the event and at the command channel.
void progressPipe::tendWindow(short events, short commands)
{
    try {
        if (events)
            m_client->handleEvents([this](const event &each) { handleEvent(each); });
        if (commands & (POLLIN | POLLERR | POLLHUP))
            throw error(error::reason::gone, "the daemon has hung up");
        if (commands & POLLOUT)
            show();
        if (const auto overdue = m_hearing.overdueAt(); overdue && clock::now() >= *overdue) {
            m_client->renewEventChannel();
            m_hearing.heard(m_shownPercent);
        }
    } catch (const error &problem) {
        loseWindow(problem.what());
    }
}

/// How long poll may wait, in milliseconds; -1 for ever.
int progressPipe::waitingTime() const
{
    std::optional<clock::time_point> next;
    const auto consider = [&next](clock::time_point when) { next = next ? std::min(*next, when) : when; };
    if (m_client && hasNews() && clock::now() < m_nextShow)
        consider(m_nextShow);
    if (m_client && m_options.showsRemaining)
        consider(
            std::max(clock::now() + std::chrono::milliseconds(1), m_nextShow - showInterval + secondsTick));
    if (const auto overdue = m_hearing.overdueAt(); m_client && overdue)
        consider(*overdue);
    if (m_options.timeoutSeconds > 0)
        consider(timeLimit());
    return next ? millisecondsUntil(*next) : -1;
}

progressPipe::clock::time_point progressPipe::timeLimit() const
{
    return m_started + std::chrono::duration_cast<clock::duration>(
                           std::chrono::duration<double>(m_options.timeoutSeconds));
}

void progressPipe::readInput()
{
    static char buffer[64 * 1024];
    const ssize_t got = ::read(m_input, buffer, sizeof buffer);
    if (got > 0)
        m_reading.feed({buffer, static_cast<std::size_t>(got)});
    else if (got == 0 || (errno != EINTR && errno != EAGAIN))
        endInput();
    for (const std::string &each : m_reading.takeComplaints())
        complain(each);
    if (m_options.autoClose && m_client && m_reading.percent() == 100)
        m_state = state::full;
}

void progressPipe::endInput()
{
    m_reading.end();
    m_input = -1;
}

void progressPipe::handleEvent(const event &each)
{
    m_hearing.heard(m_shownPercent);
    if (each.what == event::kind::clicked && each.slot == m_options.slot)
        m_state = state::cancelled;
    else if (each.what == event::kind::totalProgress)
        m_daemonEstimate = each.remainingSeconds;
    else if (each.what == event::kind::shutDown)
        throw error(error::reason::gone, "the daemon ends");
}

void progressPipe::handleSignal()
{
    signalfd_siginfo about{};
    if (::read(m_signals, &about, sizeof about) != static_cast<ssize_t>(sizeof about))
        return;
    m_signal = static_cast<int>(about.ssi_signo);
    m_state = state::interrupted;
    if (m_writer)
        m_writer->handle().signal(m_signal);
}

// What is shown.

bool progressPipe::hasNews() const
{
    return m_reading.percent().value_or(m_shownPercent) != m_shownPercent || wantedText() != m_shownText;
}

std::string progressPipe::wantedText() const
{
    std::string text = m_reading.text().value_or(m_options.text);
    if (!m_options.showsRemaining)
        return text;
    const std::chrono::duration<double> elapsed = clock::now() - m_started;
    const auto left = m_daemonEstimate >= 0 ? m_daemonEstimate : secondsLeft(elapsed.count(), m_shownPercent);
    if (!left)
        return text;
    return text.empty() ? remainingText(*left) : text + " (" + remainingText(*left) + ')';
}

void progressPipe::show()
{
    m_nextShow = clock::now() + showInterval;
    const int percent = m_reading.percent().value_or(m_shownPercent);
    if (percent != m_shownPercent)
        showPercent(percent);
    if (std::string text = wantedText(); text != m_shownText)
        showText(std::move(text));
}

void progressPipe::showPercent(int percent)
{
    m_client->updateBar(m_options.slot, percent);
    m_shownPercent = percent;
    if (m_client->eventFd() >= 0)
        m_hearing.moved(percent, clock::now());
}

void progressPipe::showText(std::string text)
{
    const auto tell = [this](const std::string &shown) {
        if (std::exchange(m_textIsShown, true))
            m_client->updateText(textSlot(), shown);
        else
            m_client->createText(textSlot(), shown);
    };
    m_shownText = text;
    try {
        tell(text);
    } catch (const error &problem) {
        if (problem.why() != error::reason::badArgument)
            throw;
        std::replace(text.begin(), text.end(), '<', '(');
        std::replace(text.begin(), text.end(), '\0', ' ');
        tell(text);
    }
}

// The end.

/// The Cancel button becomes one that ends the waiting.
progressPipe::state progressPipe::waitForOk()
{
    m_waitsForOk = true;
    m_state = state::running;
    try {
        show();
        m_client->addButton(m_options.slot, m_options.okLabel);
    } catch (const error &problem) {
        loseWindow(problem.what());
    }
    while (m_state == state::running)
        wait();
    const bool isOk = m_state == state::cancelled || (m_state == state::daemonGone && m_writer);
    return isOk ? state::inputEnded : m_state;
}

int progressPipe::finalStatus(state ending)
{
    switch (ending) {
    case state::cancelled:
        return cancelledStatus();
    case state::timedOut:
        return statusTimedOut;
    case state::daemonGone:
        return statusGone;
    case state::interrupted:
        return 128 + m_signal;
    case state::running:
    case state::full:
    case state::inputEnded:
        break;
    }
    if (m_writer) {
        if (const int status = m_writer->exitStatus(); status != 0)
            return status;
    }
    const int percent = m_reading.percent().value_or(m_options.percentage);
    if (m_options.expectsComplete && percent < 100) {
        complain("the input ended at " + std::to_string(percent) + " percent");
        return statusIncomplete;
    }
    return statusOk;
}

int progressPipe::cancelledStatus()
{
    if (m_options.autoKill) {
        if (m_writer)
            m_writer->handle().signal(SIGTERM);
        if (m_input >= 0 && !endWriters(m_input))
            complain("--auto-kill: standard input is no pipe, there is no writer to end");
        if (m_writer)
            m_writer->handle().waitForEnd(deadline(m_common.limit()));
    }
    return m_options.cancelStatus;
}
