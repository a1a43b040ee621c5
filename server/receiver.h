#pragma once

#include "server/channelTable.h"
#include "server/messageBuffer.h"
#include "widgets/appearance.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <array>
#include <functional>

class CProgressDialog;
class QAbstractButton;
class QMessageBox;
class QTcpServer;
class QTcpSocket;
class busyWidget;

/// A server of the daemon: the command server, on which clients send messages, or the event server, on
/// which they receive events (and may send messages, too). Each enters its sockets into the channel table
/// of its kind and frames what arrives on any of them in one buffer. The one active dialog, the busy window
/// and the settings are shared by both.
///
/// Sources: channels.cpp (servers and channel tables), framing.cpp (messages), events.cpp,
/// progressCommands.cpp, dialogLifecycle.cpp, configuration.cpp, notices.cpp (boxes).
class receiver : public QObject, public appearance
{
    Q_OBJECT

public:
    /// Listens at once on all IPv4 addresses: on `portnum`, of which the low 16 bits count, or on a free port
    /// when it is below 2. With a `portnum` of 0 or more, clients cannot end the daemon.
    receiver(int portnum, bool isEventChannel);
    /// Closes the channels and stops listening.
    ~receiver() override;

    /// The port that the server listens on; 0 when it could not be bound.
    int getPort() const;

    /// Loads the table of runs that were learned for the daemon's identifier.
    static void loadStatisticData(const char *file);
    /// Saves the table; null stands for the identifier that it was loaded for.
    static void saveStatisticData(const char *file);

    /// Sends one event to the event channels.
    static void sendEvent(const QString &eventCode);
    /// Shows the percent on the busy window and sends it with the remaining time, -1 for unknown.
    static void updateTotalPercent(int currentPercent, int remainingSeconds);

    /// Shows the active dialog in front of the other windows, in non-modal mode as a fresh copy.
    static void BringWindowToFront();
    /// The dialog's content went from nothing to something, or back.
    static void progressVisibilityChanged(bool isVisible);
    /// Brings the dialog to the front if it has content.
    void activate();
    /// Hides the dialog, or brings it back if it has content.
    void toggle();

    /// Whether a modal box is open; the dialog and the busy window take no input meanwhile.
    static bool boxIsOpen() { return !m_openBoxes.isEmpty(); }

    /// The orderly end, after the event loop: answers open boxes, says "shutDown", deletes the windows.
    static void cleanup();

    /// The active dialog and the busy window; null before the first progress message.
    inline static CProgressDialog *m_progress = nullptr;
    inline static busyWidget *m_splash = nullptr;
    /// The active dialog has content (it may be hidden all the same).
    inline static bool m_windowIsActive = false;

private slots:
    void connection();
    void gotData();
    void closed();

private:
    struct progressCommand;
    /// Maps the button that was clicked, null for none, to the code of the answer.
    using answerCode = std::function<quint32(const QAbstractButton *)>;

    /// The channel whose signal is being handled.
    QTcpSocket *findClient() const;
    channelTable &channels() const;
    static bool isLocal(const QTcpSocket *channel);
    static void drain(QTcpSocket *channel);
    /// Whether a walk over the event channels reaches any.
    static bool hasListeners();
    static void flushEvents();

    bool dispatch();
    bool dispatchMessages();
    void handle(const message &received);
    void doExit();
    void doConfiguration(const QString &description);
    void doAssertion(const QString &message);
    void doMessage(const QString &description);
    void doProgress(const QString &description);

    // Progress commands that are more than one call.
    void createWindows();
    static void messageStart();
    static void messageStop();
    static void busyOn();
    static void busyOff();

    static void replaceDialog();
    static void queueForDeletion(CProgressDialog *dialog);
    static void drainDeletionQueue();

    void openBox(QMessageBox *box, const answerCode &code);
    void boxAnswered(QMessageBox *box, QTcpSocket *asker, quint32 code);
    static void answer(QTcpSocket *asker, quint32 code);
    bool refuseBox();
    static void cancelRun();
    static bool dialogBypassesManager();
    static void keepBoxesInFront();
    static void dismissBoxes();

    inline static channelTable m_clientCommandChannels;
    inline static channelTable m_clientEventChannels;
    /// Events wait in their channels until the messages at hand have been handled.
    inline static bool m_collectingEvents = false;
    /// Modal boxes that wait for an answer, the oldest first.
    inline static QList<QMessageBox *> m_openBoxes;
    /// Busy mode: the busy window was asked for by itself, not by a dialog.
    inline static bool m_busyActive = false;
    /// Replaced dialogs, which may still be in the middle of an operation; deleted after the message.
    inline static std::array<CProgressDialog *, 32> m_deleting{};
    inline static int m_deletingCount = 0;

    bool m_isEventServer;
    QTcpServer *m_server;
    /// Clients cannot end the daemon.
    bool m_dontQuit;
    /// What arrived and has not been handled yet, from all channels of this server.
    messageBuffer m_command;
    /// The channel that the text which waits came from; boxes are answered on it.
    QPointer<QTcpSocket> m_client;
};
