#include "tests/fuzz/daemonSession.h"

#include "dialog/CProgressDialog.h"
#include "widgets/appearance.h"
#include "widgets/busyWidget.h"

#include <QAbstractButton>
#include <QApplication>
#include <QImage>
#include <QMessageBox>
#include <QMouseEvent>
#include <QTemporaryDir>

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

/// The settings as they are when a daemon starts.
struct settings {
    QString busyPixmap = appearance.m_busyPixmap;
    QString windowTitle = appearance.m_windowTitle;
    QString windowPixmap = appearance.m_windowPixmap;
    QString windowIcon = appearance.m_windowIcon;
    QFont fonts[4] = {appearance.m_labelFont, appearance.m_barNumFont, appearance.m_barLabelFont,
                      appearance.m_buttonFont};

    void putBack() const;
};

void settings::putBack() const
{
    appearance.m_busyPixmap = busyPixmap;
    appearance.m_windowTitle = windowTitle;
    appearance.m_windowPixmap = windowPixmap;
    appearance.m_windowIcon = windowIcon;
    appearance.m_labelFont = fonts[0];
    appearance.m_barNumFont = fonts[1];
    appearance.m_barLabelFont = fonts[2];
    appearance.m_buttonFont = fonts[3];
    for (QColor *color :
         {&appearance.m_barColor, &appearance.m_invertedNumberColor, &appearance.m_busyBarColor,
          &appearance.m_busyInvertedNumberColor, &appearance.m_dialogBackgroundColor,
          &appearance.m_dialogFrameColor, &appearance.m_barBackgroundColor,
          &appearance.m_busyBarBackgroundColor, &appearance.m_shadowLightColor, &appearance.m_shadowDarkColor,
          &appearance.m_buttonBaseColor, &appearance.m_focusFrameColor})
        *color = QColor();
    appearance.m_desktopWidth = 640;
    appearance.m_desktopHeight = 480;
    appearance.m_paintOffsetX = appearance.m_paintOffsetY = 0;
    appearance.m_busyXpos = appearance.m_busyYpos = -1;
    appearance.m_busyWidth = appearance.m_busyHeight = -1;
    appearance.m_dialogBackgroundAlphaval = 200;
    appearance.m_modal_dialog = true;
    appearance.m_dialog_flags = m_modal_flags;
}

const settings &startSettings()
{
    static const settings atStart;
    return atStart;
}

QList<QMessageBox *> boxes()
{
    QList<QMessageBox *> open;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (auto *box = qobject_cast<QMessageBox *>(window); box && box->isVisible())
            open.append(box);
    }
    return open;
}

} // namespace

void daemonSession::prepareProcess()
{
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
    startSettings();
    // With an identifier that fits no path nothing is saved.
    static const std::string tooLong(8192, 'x');
    receiver::loadStatisticData(tooLong.c_str());
}

daemonSession::daemonSession()
    : m_handlers(std::make_unique<handlers>()), m_commandServer(std::make_unique<receiver>(-2, false)),
      m_eventServer(std::make_unique<receiver>(-1, true)), m_commands(connectTo(m_commandServer->getPort())),
      m_events(connectTo(m_eventServer->getPort()))
{
    turn();
}

daemonSession::~daemonSession()
{
    turn();
    receiver::cleanup();
    // The client goes first, with a reset: connections that the servers close would linger for a minute, and
    // use up the ports of the machine.
    hangUp(m_commands);
    hangUp(m_events);
    m_eventServer.reset();
    m_commandServer.reset();
    turn();
    startSettings().putBack();
}

int daemonSession::connectTo(int port)
{
    const int channel = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    // Resets the connection at its end: it must not linger, there are too many of them.
    const linger atOnce{1, 0};
    setsockopt(channel, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    // The fuzzer's clock interrupts calls; the connection is made all the same.
    if (connect(channel, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 &&
        errno != EINTR) {
        std::fprintf(stderr, "no connection to port %d: %s\n", port, std::strerror(errno));
        std::abort();
    }
    return channel;
}

void daemonSession::hangUp(int &channel)
{
    if (channel >= 0)
        close(channel);
    channel = -1;
}

void daemonSession::send(int channel, std::string_view bytes)
{
    // What the daemon has sent must not fill the way.
    char unwanted[4096];
    while (recv(channel, unwanted, sizeof unwanted, MSG_DONTWAIT) > 0) {
    }
    while (!bytes.empty()) {
        const ssize_t sent = ::send(channel, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent > 0)
            bytes.remove_prefix(static_cast<size_t>(sent));
        turn();
    }
}

/// Gives everything that waits its turn.
void daemonSession::turn()
{
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

void daemonSession::sendCommands(std::string_view bytes)
{
    send(m_commands, bytes);
}

void daemonSession::sendOnEventChannel(std::string_view bytes)
{
    if (m_events >= 0)
        send(m_events, bytes);
}

void daemonSession::toggleEventChannel()
{
    if (m_events >= 0)
        hangUp(m_events);
    else
        m_events = connectTo(m_eventServer->getPort());
    turn();
}

void daemonSession::acceptBox()
{
    if (const auto open = boxes(); !open.isEmpty() && !open.last()->buttons().isEmpty())
        open.last()->buttons().constFirst()->click();
    turn();
}

void daemonSession::rejectBox()
{
    if (const auto open = boxes(); !open.isEmpty())
        open.first()->reject();
    turn();
}

void daemonSession::clickButtons()
{
    if (!m_handlers->m_active.dialog())
        return;
    for (QAbstractButton *button : m_handlers->m_active.dialog()->findChildren<QAbstractButton *>()) {
        if (button->isVisible())
            button->click();
    }
    turn();
}

void daemonSession::pressBusyWindow()
{
    if (!m_handlers->m_active.busyWindow())
        return;
    QMouseEvent press(QEvent::MouseButtonPress, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    QCoreApplication::sendEvent(m_handlers->m_active.busyWindow(), &press);
    turn();
}

void daemonSession::tick()
{
    if (!m_handlers->m_active.dialog())
        return;
    QTimerEvent second(0);
    QCoreApplication::sendEvent(m_handlers->m_active.dialog(), &second);
    turn();
}
