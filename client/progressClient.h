#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <utility>
#include <vector>

#if defined(__GNUC__)
#define PROGRESSCLIENT_EXPORT __attribute__((visibility("default")))
#else
#define PROGRESSCLIENT_EXPORT
#endif

/// A client of one progress daemon: shows bars, texts and buttons, asks questions and hears events, over the
/// daemon's local channel. Only daemons of this user are spoken to.
///
/// Texts are UTF-8 and may hold anything but a zero byte and the closing tag of their message ("</progress>",
/// "</configuration>", "</msgbox>", "</assert>"), up to 16 MiB.
///
/// Errors: every function that can fail throws `progressClient::error`. Nothing waits longer than the
/// time-out that it was given, and nothing raises SIGPIPE. A user may take for ever to answer; a daemon may
/// not: while a call waits, it looks from time to time whether the daemon still gets round to its clients.
///
/// Threads: one object belongs to one thread at a time; different objects are independent.
///
/// The daemon answers no command, so a command that returns has been handed to the system, no more;
/// `finish()` says whether the daemon has handled everything.
class PROGRESSCLIENT_EXPORT progressClient
{
public:
    using milliseconds = std::chrono::milliseconds;

    /// Slots for bars, texts and buttons run from 0 to `slots` - 1.
    static constexpr int slots = 10;
    /// As a bar's percent: the bar is given up. The daemon shows it full.
    static constexpr int givenUp = -1;
    /// As a base port: none. Such a daemon takes any free ports and ends with its last client.
    static constexpr int noBasePort = -2;
    /// As a time-out: as long as it takes.
    static constexpr milliseconds forever{-1};
    static constexpr milliseconds defaultTimeout{5000};

    /// What the functions of this class throw; `what()` is one line without a full stop.
    class PROGRESSCLIENT_EXPORT error : public std::runtime_error
    {
    public:
        enum class reason {
            badArgument, ///< an argument that the protocol cannot carry; nothing was sent
            notRunning,  ///< nobody answers at the local channel
            cannotStart, ///< the daemon's program is missing or ended at once, or its port is taken
            notOurs,     ///< the local channel, or its folder, belongs to somebody else
            gone,        ///< the daemon, or its connection to us, ended half-way
            timedOut,
            system, ///< a call to the system failed
        };
        error(reason why, const std::string &text) : std::runtime_error(text), m_why(why) {}
        reason why() const noexcept { return m_why; }

    private:
        reason m_why;
    };

    /// For clients that speak to the daemon over TCP; 0 where there is none.
    struct ports {
        int command = 0;
        int event = 0;
    };

    struct daemonOptions {
        std::string program = "progressd"; ///< looked for in PATH unless it holds a "/"
        int basePort = noBasePort;         ///< `noBasePort`, 0 (any free ports, but it stays), or 2 to 65534
        milliseconds timeout = milliseconds{10000};
        /// No ports and no lock file: only this user's clients reach it. Excludes a base port.
        bool isPrivate = false;
        /// Of a private daemon: the name under which it learns runs, a part of a file name; empty: it learns
        /// nothing. None: its identifier.
        std::optional<std::string> learnName = std::nullopt;
    };

    /// A daemon that `startDaemon()` has found or made.
    struct startedDaemon {
        ports daemonPorts;
        bool wasRunning = false;
        pid_t process = 0; ///< 0 when it was running; no child of the caller
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
        std::string title;                       ///< without "[#]", as the text
        std::string text;                        ///< shown as it is: markup is no markup
        std::vector<button> buttons{button::ok}; ///< one to ten
        icon picture = icon::question;
        button preset = button::none; ///< the one that Return presses; one of `buttons`, or none
    };

    struct event {
        enum class kind { isShown, isHidden, isActivated, clicked, totalProgress, shutDown, closed, other };
        kind what = kind::other;
        int slot = -1;             ///< of the button, for `clicked`
        int percent = -1;          ///< for `totalProgress`
        int remainingSeconds = -1; ///< for `totalProgress`; -1 while unknown
        std::string text;          ///< the event as it came
    };

    /// Where the daemon of this identifier is to be reached: a socket below XDG_RUNTIME_DIR or /tmp.
    static std::string socketPath(const std::string &identifier);

    /// Whether a daemon answers there. Asking ends no daemon.
    static bool isRunning(const std::string &identifier, milliseconds timeout = defaultTimeout);

    /// Starts the daemon unless it runs, and waits until it serves. The daemon is detached: it has its own
    /// session, no standard streams, and keeps the caller's working directory and environment (DISPLAY!). Of
    /// several callers at the same time, one starts it.
    static startedDaemon startDaemon(const std::string &identifier, const daemonOptions &options);
    static startedDaemon startDaemon(const std::string &identifier);

    /// Ends the daemon in order and waits for its end. An error (notOurs) when what answers is no daemon.
    static void stopDaemon(const std::string &identifier, milliseconds timeout = defaultTimeout);

    /// Connects to the running daemon of this identifier. `timeout` is also the one of every later call that
    /// takes none.
    explicit progressClient(const std::string &identifier, milliseconds timeout = defaultTimeout);
    progressClient(progressClient &&) noexcept;
    progressClient &operator=(progressClient &&) noexcept;
    /// Hangs up. A daemon without a base port ends with its last client, apart from those that only listened.
    ~progressClient();

    /// An error (timedOut) when the daemon does not get round to its clients before the time is up, as one
    /// does not that is stopped. For who polls; calls that wait look by themselves.
    void checkAlive();

    /// The daemon's process; 0 for one that this process cannot see.
    pid_t daemonProcess() const;

    /// Reserves a slot of which neither the row nor the button shows anything, and gives its number, or -1
    /// when there is none. What stands in the slot is removed when this object hangs up, however that
    /// happens.
    int claim();

    // Progress. Slots are 0 to 9.

    /// Shows a bar at 0 percent; on a slot with a bar, starts it again. The bar reads "CAPTION PERCENT%".
    void createBar(int slot, std::string_view caption);
    /// `percent` is 0 to 100, or `givenUp`.
    void updateBar(int slot, int percent);
    /// The bar moves to and fro, without a percent, until the next `updateBar()`.
    void pulse(int slot);
    /// Removes the slot's bar or text.
    void removeBar(int slot);
    /// Shows a text line; it takes the place of a bar in the same slot.
    void createText(int slot, std::string_view text);
    void updateText(int slot, std::string_view text);
    /// Removes the slot's text or bar.
    void removeText(int slot);
    /// Shows a button. A click on it comes as an event.
    void addButton(int slot, std::string_view label);
    void removeButton(int slot);
    /// Brings a dialog that has content to the front; is answered by the event `isActivated` in any case.
    void activate();
    /// Hides the dialog while the client shows something itself; the run will not be learned.
    void messageStart();
    /// Brings the dialog back after `messageStart()`.
    void messageStop();
    /// The busy window is visible only after it was given a position by `configure()`.
    void busyOn();
    void busyOff();

    /// Changes settings: pairs of a key without its "=", for example "windowTitle", and a value. Wants to
    /// come before the first progress command, which builds the dialog. A key or value holds no ";".
    void configure(const std::vector<std::pair<std::string, std::string>> &entries);

    // Boxes. Several may be open and be answered in any order.

    /// Shows a box and waits for its answer. When the time is up the box stays on the screen, unheard.
    button ask(const question &box, milliseconds timeout = forever);
    /// Shows `text` as a failed assertion; the answer is yes, yesToAll, retry, abort or none.
    button reportAssertion(std::string_view text, milliseconds timeout = forever);
    /// Shows a box and gives its number for `answer()`, without waiting.
    int openBox(const question &box);
    int openAssertion(std::string_view text);
    /// Waits for the answer of a box that is open, which can be had once. None when the time is up.
    std::optional<button> answer(int number, milliseconds timeout = forever);

    /// Asks the daemon to end; only one without a base port does.
    void exitDaemon();

    /// Sends bytes as they are.
    void send(std::string_view message);

    /// Says that nothing more will be sent, waits until the daemon has handled everything, and hangs up. Ends
    /// the use of this object; claimed slots are free, open boxes stay unheard.
    void finish();

    // Events. A daemon tells them to who listens, from then on.

    void listen();
    /// For poll(2), POLLIN: something has come, call `handleEvents()`. POLLOUT: a command will not wait.
    /// Other calls take events in, too, so look with `handleEvents()` before you poll. Owned by the object;
    /// do not read it.
    int fd() const;
    /// Waits for the next event. None when the time is up; an error (gone) when the daemon has hung up.
    std::optional<event> nextEvent(milliseconds timeout);
    /// Takes what has come (a bounded part, so that a busy daemon cannot hold us), calls `handler` with each
    /// event of it and returns how many; does not wait. An error (gone) when there are none left and the
    /// daemon has hung up. Of events that nobody takes the newest 10,000 are kept.
    std::size_t handleEvents(const std::function<void(const event &)> &handler);

private:
    struct connection;
    void progress(std::string_view keyword);
    void progress(std::string_view keyword, int slot);
    void progress(std::string_view keyword, int slot, std::string_view text);

    std::unique_ptr<connection> m_connection;
};
