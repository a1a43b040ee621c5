#include "app/toolkitMessages.h"

#include "app/standardError.h"
#include "log/dump.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QMessageLogContext>
#include <QString>

#include <atomic>
#include <chrono>
#include <cstdlib>

namespace
{

constexpr qsizetype longestMessage = 500; // characters
constexpr int messagesASecond = 10;

int statusOfFailure = EXIT_FAILURE;

/// Whether the second at hand has room for one more.
bool isWorthARecord()
{
    using clock = std::chrono::steady_clock;
    static clock::time_point second;
    static int count = 0;
    const auto now = clock::now();
    if (now - second >= std::chrono::seconds(1)) {
        if (count > messagesASecond)
            dump("---- toolkit messages left out", count - messagesASecond);
        second = now;
        count = 0;
    }
    return ++count <= messagesASecond;
}

void complainAbout(QtMsgType type, const QMessageLogContext &, const QString &text)
{
    complain(text.toLocal8Bit().toStdString());
    if (type == QtFatalMsg)
        std::_Exit(statusOfFailure);
}

/// A font's description or an image of a client's that cannot be used has no effect, and is no news.
bool isAboutSettings(const QMessageLogContext &context, const QString &text)
{
    return text.startsWith(QLatin1String("QFont::")) ||
           QByteArrayView(context.category).startsWith("qt.gui.imageio");
}

/// The toolkit's threads come here, too; a message that comes while another is written is lost.
void log(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    static std::atomic_flag isBusy;
    if (!isAboutSettings(context, text) && !isBusy.test_and_set()) {
        if (isWorthARecord())
            dump(("---- toolkit: " + text.left(longestMessage).simplified()).toLatin1().constData(), type);
        isBusy.clear();
    }
    if (type == QtFatalMsg)
        std::exit(EXIT_FAILURE);
}

} // namespace

void reportToolkitMessages(int failureStatus)
{
    statusOfFailure = failureStatus;
    qInstallMessageHandler(complainAbout);
}

void logToolkitMessages()
{
    qInstallMessageHandler(log);
    // What it says while it takes itself apart would find nothing whole that a record needs.
    std::atexit(
        [] { qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {}); });
    leaveStandardError();
}
