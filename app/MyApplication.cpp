#include "app/MyApplication.h"

#include <QEvent>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace
{

/// None is under way.
constexpr std::sig_atomic_t noEnd = -1;
volatile std::sig_atomic_t endStatus = noEnd;
void (*lastStep)() = nullptr;

/// A handler may do next to nothing; what it writes here wakes the event loop.
int wakeUp[2] = {-1, -1};

extern "C" void cutShort(int)
{
    if (lastStep)
        lastStep();
    _exit(endStatus);
}

extern "C" void noteSignal(int number)
{
    const int error = errno;
    const auto byte = static_cast<unsigned char>(number);
    [[maybe_unused]] const ssize_t written = write(wakeUp[1], &byte, 1);
    if (endStatus == noEnd)
        limitEnd(128 + number);
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
        for (const int number : {SIGTERM, SIGINT, SIGHUP})
            handle(number);
    }
    return wakeUp[0];
}

} // namespace

MyApplication::MyApplication(int &argc, char **argv) : QApplication(argc, argv)
{
    connect(this, &QGuiApplication::commitDataRequest, this, &MyApplication::commitData);
    setQuitOnLastWindowClosed(false);
}

void MyApplication::commitData(QSessionManager &)
{
    quit();
}

/// The toolkit's own way would close all windows first, and stay when one of them, say a box that only a
/// button answers, does not agree.
bool MyApplication::event(QEvent *event)
{
    if (event->type() != QEvent::Quit)
        return QApplication::event(event);
    exit(0);
    return true;
}

void keepEndShort(void (*step)())
{
    lastStep = step;
}

void limitEnd(int status, unsigned seconds)
{
    if (endStatus == noEnd)
        endStatus = status;
    std::signal(SIGALRM, cutShort);
    alarm(seconds);
}

endSignals::endSignals() : m_notifier(openedWakeUp(), QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] {
        m_notifier.setEnabled(false);
        unsigned char number;
        if (read(wakeUp[0], &number, 1) == 1)
            QCoreApplication::exit(128 + number);
    });
}
