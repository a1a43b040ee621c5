#include "app/endSignals.h"

#include <QCoreApplication>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace
{

constexpr unsigned longestEnd = 30; // seconds

/// A handler may do next to nothing; what it writes here wakes the event loop.
int wakeUp[2] = {-1, -1};

extern "C" void noteSignal(int number)
{
    const int error = errno;
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = write(wakeUp[1], &byte, 1);
    alarm(longestEnd);
    errno = error;
}

void handle(int number)
{
    struct sigaction action = {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler == SIG_IGN)
        return;
    action = {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
}

int openedWakeUp()
{
    if (pipe2(wakeUp, O_NONBLOCK | O_CLOEXEC) == 0) {
        std::signal(SIGALRM, SIG_DFL);
        for (const int number : {SIGTERM, SIGINT, SIGHUP})
            handle(number);
    }
    return wakeUp[0];
}

} // namespace

endSignals::endSignals() : m_notifier(openedWakeUp(), QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] {
        m_notifier.setEnabled(false);
        unsigned char number;
        if (read(wakeUp[0], &number, 1) == 1)
            QCoreApplication::exit(128 + number);
    });
}
