// Messages with all that they do, on the offscreen platform, and a user who can do a few things. A control
// character ends a piece and says which way it came in, or what the user does then. What an input leaves
// behind ends with it.

#include "dialog/CProgressDialog.h"
#include "log/dump.h"
#include "server/channel.h"
#include "server/handlers.h"
#include "server/messageBuffer.h"
#include "server/messageStream.h"
#include "stats/statistics.h"
#include "widgets/appearance.h"
#include "widgets/busyWidget.h"

#include <QAbstractButton>
#include <QApplication>
#include <QImage>
#include <QMessageBox>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{

/// An identifier that fits no path.
const std::string unsavable(8192, 'x');

enum end : char { port = 1, local, acceptBox, rejectBox, clickButtons, pressBusyWindow, tick, hangUp };

/// The end of a connection whose other end has gone: events are put together for it, and forgotten.
int deafDescriptor()
{
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0)
        std::abort();
    close(ends[1]);
    return ends[0];
}

class session
{
public:
    session() { m_listener.setReading(false); }
    ~session()
    {
        turn();
        act(hangUp);
        m_handlers.cleanup();
        turn();
        appearance = {};
        statistics = {};
        statistics.load(unsavable.c_str());
    }

    void handlePiece(std::string_view piece, char end);

private:
    template <typename Buffer> void handleAll(Buffer &buffer, dialect from)
    {
        while (const auto received = buffer.next()) {
            // What a local channel does itself.
            if (received->kind == messageKind::claim)
                m_claimed.push_back(m_handlers.claim());
            else if (received->kind == messageKind::events)
                m_handlers.m_listeners.addLocal(&m_listener);
            else
                m_handlers.handle(*received, from, [] { return [](quint32) {}; });
        }
    }
    void act(char end);
    /// Gives everything that waits its turn.
    static void turn()
    {
        for (int i = 0; i < 3; ++i) {
            QCoreApplication::processEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
    }

    handlers m_handlers;
    std::vector<int> m_claimed;
    channel m_listener{wire::descriptor(deafDescriptor())};
    messageBuffer m_port;
    messageStream m_local;
};

void session::handlePiece(std::string_view piece, char end)
{
    if (end == local) {
        const auto size = static_cast<qsizetype>(piece.size());
        piece.copy(m_local.reserve(size), piece.size());
        m_local.commit(size);
        handleAll(m_local, dialect::local);
    } else {
        m_port.append(QByteArrayView(piece.data(), static_cast<qsizetype>(piece.size())));
        handleAll(m_port, dialect::port);
    }
    turn();
    act(end);
    turn();
}

void session::act(char end)
{
    if (end == hangUp) {
        m_handlers.m_listeners.removeLocal(&m_listener);
        for (const int slot : std::exchange(m_claimed, {})) {
            if (slot >= 0)
                m_handlers.release(slot);
        }
    }
    CProgressDialog *dialog = m_handlers.m_active.dialog();
    for (QWidget *window : QApplication::topLevelWidgets()) {
        auto *box = qobject_cast<QMessageBox *>(window);
        if (!box || !box->isVisible())
            continue;
        if (end == acceptBox && !box->buttons().isEmpty())
            box->buttons().constFirst()->click();
        else if (end == rejectBox)
            box->reject();
    }
    if (!dialog)
        return;
    if (end == clickButtons) {
        for (QAbstractButton *button : dialog->findChildren<QAbstractButton *>()) {
            if (button->isVisible())
                button->click();
        }
    } else if (end == pressBusyWindow) {
        QMouseEvent press(QEvent::MouseButtonPress, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_handlers.m_active.busyWindow(), &press);
    } else if (end == tick) {
        auto *timer = dialog->findChild<QTimer *>();
        QTimerEvent second(timer->timerId());
        if (timer->isActive())
            QCoreApplication::sendEvent(timer, &second);
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    setLog(nullptr);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication::setDesktopSettingsAware(false);
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = {name, nullptr};
    // Never deleted: it would have to go before static objects of the toolkit.
    static const auto *const application = new QApplication(argc, argv);
    Q_UNUSED(application)
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});

    // The names of image files that an input makes up stay in here.
    static const QTemporaryDir directory;
    if (chdir(directory.path().toLocal8Bit().constData()) != 0)
        std::abort();
    QImage(48, 64, QImage::Format_RGB32).save(QStringLiteral("Busy.png"));
    mkfifo("pipe", 0600);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    std::string_view input(reinterpret_cast<const char *>(data), size);
    session all;
    while (!input.empty()) {
        const std::size_t end = input.find_first_of("\x01\x02\x03\x04\x05\x06\x07\x08");
        const bool isLast = end == std::string_view::npos;
        all.handlePiece(input.substr(0, end), isLast ? char{port} : input[end]);
        input.remove_prefix(isLast ? input.size() : end + 1);
    }
    return 0;
}
