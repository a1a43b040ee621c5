#pragma once

#include "progressCommands.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>
#include <vector>

/// A client of one progress daemon: shows bars, texts and buttons (see `progressCommands`), asks questions
/// and hears events, over the daemon's local channel. Only daemons of this user are spoken to.
///
/// Errors: every function that is not `noexcept` may throw `progressError`. Commands, `claim()`, boxes and
/// events: `badArgument` for a mistake of the caller's, `timedOut` for a daemon that does not get on, `gone`
/// for one that has hung up; what else is said where it is thrown.
///
/// Waiting: a call waits no longer than the time-out of the object, or the one that it was given: a command
/// only while the daemon takes nothing more, `claim()`, `checkAlive()` and `finish()` for its answer. A user
/// may take for ever to answer; a daemon may not: while a call waits for the user, it looks every half
/// time-out whether the daemon still gets round to its clients. Once a call has timed out, later ones answer
/// at once, until the daemon speaks, or takes something, again. A message that could be sent only in part
/// cannot be mended: the object is `gone` for good.
///
/// Threads: one object belongs to one thread at a time; different objects are independent, and the static
/// functions can be called by any threads at once. Nothing raises SIGPIPE.
///
/// After fork() the child has a copy of the object, but the connection is the parent's: the child does not
/// use it, and where it ends, or calls `finish()`, closes only its own copy.
///
/// The daemon answers no command, so a command that returns has been handed to the system, no more;
/// `finish()` says whether the daemon has handled everything.
class PROGRESSCLIENT_EXPORT progressClient : public progressCommands
{
public:
    using milliseconds = std::chrono::milliseconds;
    using error = progressError;

    /// As a base port: none. Such a daemon takes any free ports and ends with its last client.
    static constexpr int noBasePort = -2;
    /// As a time-out: as long as it takes, as any that is negative.
    static constexpr milliseconds unlimited{-1};
    static constexpr milliseconds defaultTimeout{5000};

// The names that these once had; the toolkit has macros of the same names.
#pragma push_macro("slots")
#pragma push_macro("forever")
#undef slots
#undef forever
    static constexpr int slots = slotCount;
    static constexpr milliseconds forever = unlimited;
#pragma pop_macro("forever")
#pragma pop_macro("slots")

    /// For clients that speak to the daemon over TCP; 0 where there is none.
    struct ports {
        int command = 0;
        int event = 0;
    };

    struct daemonOptions {
        /// Looked for in PATH unless it holds a "/". Empty: what the environment's PROGRESSD names, else
        /// "progressd".
        std::string program = {};
        int basePort = noBasePort; ///< `noBasePort`, 0 (any free ports, but it stays), or 2 to 65534
        milliseconds timeout = milliseconds{10000};
        /// No ports and no lock file: only this user's clients reach it. Excludes a base port.
        bool isPrivate = false;
        /// Of a private daemon: the name under which it learns runs, a part of a file name; empty: it learns
        /// nothing. None: its identifier.
        std::optional<std::string> learnName = std::nullopt;
        /// Of a private daemon: it does not end with its last client, but when it is stopped, or when it has
        /// had no client for `idle`, unless that is 0. Whole seconds.
        bool stays = false;
        std::chrono::seconds idle{0};
    };

    /// A daemon that `startDaemon()` has found or made.
    struct startedDaemon {
        ports daemonPorts = {};
        bool wasRunning = false; ///< it is not the one that this call has started
        pid_t process = 0;       ///< the one that serves, no child of the caller; 0 when it cannot be seen
    };

    /// The buttons of a box; the numbers are those of the protocol.
    enum class button : unsigned {
        none = 0, ///< the box was closed without one
        ok = 0x400,
        save = 0x800,
        saveAll = 0x1000,
        open = 0x2000,
        yes = 0x4000,
        yesToAll = 0x8000,
        no = 0x10000,
        noToAll = 0x20000,
        abort = 0x40000,
        retry = 0x80000,
        ignore = 0x100000,
        close = 0x200000,
        cancel = 0x400000,
        discard = 0x800000,
        help = 0x1000000,
        apply = 0x2000000,
        reset = 0x4000000,
        restoreDefaults = 0x8000000,
    };

    enum class icon { none = 0, information = 1, warning = 2, critical = 3, question = 4 };

    struct question {
        std::string title = {};
        std::string text = {};                   ///< shown as it is: markup is no markup
        std::vector<button> buttons{button::ok}; ///< one to ten, else an error (badArgument)
        icon picture = icon::question;
        button preset = button::none; ///< the one that Return presses; one of `buttons`, or none
    };

    struct event {
        enum class kind { isShown, isHidden, isActivated, clicked, totalProgress, shutDown, closed, other };
        kind what = kind::other;
        int slot = -1;             ///< of the button, for `clicked`
        int percent = -1;          ///< for `totalProgress`
        int remainingSeconds = -1; ///< for `totalProgress`; -1 while unknown
        std::string text = {};     ///< the event as it came
    };

    // Daemons. All of these throw badArgument for an identifier that is no part of a file name, system where
    // the path of the user's folder is too long for a socket, and notOurs where the folder, or what answers,
    // is somebody else's.

    /// Where the daemon of this identifier is to be reached: a socket in XDG_RUNTIME_DIR/progressd, or where
    /// that is no folder of this user's in /run/user/UID/progressd or /tmp/progressd-UID. Does not wait.
    static std::string socketPath(const std::string &identifier);

    /// Whether a daemon answers there. Asking ends no daemon. Throws timedOut for one that takes no
    /// connection.
    static bool isRunning(const std::string &identifier, milliseconds timeout = defaultTimeout);

    /// Starts the daemon unless it runs, and waits until it serves, for `options.timeout` at most. The daemon
    /// is detached: it has its own session, no standard streams, and keeps the caller's working directory and
    /// environment (DISPLAY!). Of several callers at the same time, one starts it, and all are told about the
    /// one that serves. Throws badArgument for options that exclude each other; cannotStart, with the
    /// daemon's own reason, for a program that cannot be run or ends at once, and for a port that is taken;
    /// timedOut; gone for one that ends as soon as it serves; system where no folder, pipe or process can be
    /// made.
    static startedDaemon startDaemon(const std::string &identifier, const daemonOptions &options);
    static startedDaemon startDaemon(const std::string &identifier);

    /// Ends the daemon in order and waits for its end, also where another process has asked for it before.
    /// Throws notRunning; timedOut; notOurs when what answers is no daemon.
    static void stopDaemon(const std::string &identifier, milliseconds timeout = defaultTimeout);

    // The connection.

    /// Connects to the running daemon of this identifier. `timeout` is also the one of every later call that
    /// takes none. Throws notRunning, and as the functions above.
    explicit progressClient(const std::string &identifier, milliseconds timeout = defaultTimeout);
    /// Connects likewise, with `options` to a daemon that is started unless it runs. Where there is none, or
    /// when it goes, the object goes on without: commands do nothing, `claim()` gives -1, boxes are answered
    /// with none at once, there are no events, `fd()` is -1. Only badArgument is thrown.
    static progressClient orNothing(const std::string &identifier, milliseconds timeout = defaultTimeout);
    static progressClient orNothing(const std::string &identifier, const daemonOptions &options,
                                    milliseconds timeout = defaultTimeout);
    /// An object that was moved from can be assigned to and destroyed; else it throws badArgument.
    progressClient(progressClient &&) noexcept;
    progressClient &operator=(progressClient &&) noexcept;
    /// Hangs up. A daemon without a base port ends with its last client, apart from those that only listened.
    ~progressClient() override;

    /// Why there is no connection, or no longer; empty while there is one. For objects of `orNothing()`.
    std::string whyGone() const;

    /// An error (timedOut) when the daemon does not get round to its clients before the time is up, as one
    /// does not that is stopped. For who polls; calls that wait look by themselves.
    void checkAlive();

    /// The daemon's process; 0 for one that this process cannot see.
    pid_t daemonProcess() const;

    /// Reserves a slot of which neither the row nor the button shows anything, and gives its number, or -1
    /// when there is none. What stands in the slot is removed when this object hangs up, however that
    /// happens. After an error (timedOut) the next call takes the answer that is still to come.
    int claim();

    /// Sends bytes as they are.
    void send(std::string_view message);
    /// Sends the commands in one piece, and empties the batch.
    void send(progressBatch &batch);

    /// Says that nothing more will be sent, waits until the daemon has handled everything, and hangs up. Ends
    /// the use of this object; claimed slots are free, open boxes stay unheard.
    void finish();

    // Boxes. Several may be open and be answered in any order. What a text cannot carry is replaced, as in
    // commands.

    /// Shows a box and waits for its answer. When the time is up, an error (timedOut): the box stays on the
    /// screen, unheard.
    button ask(const question &box, milliseconds timeout = unlimited);
    /// Shows `text` as a failed assertion; the answer is yes, yesToAll, retry, abort or none.
    button reportAssertion(std::string_view text, milliseconds timeout = unlimited);
    /// Shows a box and gives its number for `answer()`, without waiting.
    int openBox(const question &box);
    int openAssertion(std::string_view text);
    /// Waits for the answer of a box that is open, which can be had once. None when the time is up. Throws
    /// badArgument for a box that is not open.
    std::optional<button> answer(int number, milliseconds timeout = unlimited);

    // Events. A daemon tells them to who listens, from then on.

    void listen();
    /// For poll(2), POLLIN: something has come, call `handleEvents()`. POLLOUT: a command will not wait.
    /// Other calls take events in, too, so look with `handleEvents()` before you poll. Owned by the object;
    /// do not read it.
    int fd() const;
    /// Waits for the next event. None when the time is up; an error (gone) when the daemon has hung up, and
    /// badArgument unless `listen()` was called.
    std::optional<event> nextEvent(milliseconds timeout);
    /// Takes what has come (a bounded part, so that a busy daemon cannot hold us), calls `handler` with each
    /// event of it and returns how many; does not wait. An error (gone) when there are none left and the
    /// daemon has hung up. Of events that nobody takes the newest 10,000 are kept.
    std::size_t handleEvents(const std::function<void(const event &)> &handler);

private:
    class connection;
    explicit progressClient(std::unique_ptr<connection> made);
    void tell(const std::string &message) override;
    connection &here() const;

    std::unique_ptr<connection> m_connection;
};
