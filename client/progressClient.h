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

/// A client of one progress daemon: shows bars, texts and buttons, asks questions and hears events.
///
/// Texts are UTF-8. The protocol carries Latin-1: a character outside of it arrives as "?", and a byte that
/// is no UTF-8 is taken as a Latin-1 character. No text may hold a zero byte or one of the protocol's tags
/// ("<progress>", "<exit/>" and so on).
///
/// Errors: every function that can fail throws `progressClient::error`. Nothing waits longer than the
/// time-out that it was given, and nothing raises SIGPIPE.
///
/// Threads: one object belongs to one thread at a time; different objects are independent.
///
/// The daemon answers no command, so a command that returns has been handed to the system, no more;
/// `finish()` says whether the daemon has read everything.
class PROGRESSCLIENT_EXPORT progressClient
{
public:
    using milliseconds = std::chrono::milliseconds;

    /// Slots for bars, texts and buttons run from 0 to `slots` - 1.
    static constexpr int slots = 10;
    /// As a bar's percent: the bar is given up. The daemon shows it full.
    static constexpr int givenUp = -1;
    /// As a base port: none. Such a daemon takes any free ports and ends with its last command channel.
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
            notRunning,  ///< no lock file, or one whose ports refuse
            cannotStart, ///< the daemon's program is missing or ended at once, or its port is taken
            notOurs,     ///< the daemon belongs to somebody else
            gone,        ///< the daemon, or its connection to us, ended half-way
            timedOut,
            system, ///< a call to the system failed
        };
        error(reason why, const std::string &text) : std::runtime_error(text), m_why(why) {}
        reason why() const noexcept { return m_why; }

    private:
        reason m_why;
    };

    struct ports {
        int command = 0;
        int event = 0;
    };

    struct daemonOptions {
        std::string program = "progressd"; ///< looked for in PATH unless it holds a "/"
        int basePort = noBasePort;         ///< `noBasePort`, 0 (any free ports, but it stays), or 2 to 65534
        milliseconds timeout = milliseconds{10000};
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
        std::string text;                        ///< shown as it is, markup too
        std::vector<button> buttons{button::ok}; ///< one to ten
        icon picture = icon::question;
        button preset = button::none; ///< the one that Return presses; one of `buttons`, or none
    };

    struct event {
        enum class kind { isShown, isHidden, isActivated, clicked, totalProgress, shutDown, other };
        kind what = kind::other;
        int slot = -1;             ///< of the button, for `clicked`
        int percent = -1;          ///< for `totalProgress`
        int remainingSeconds = -1; ///< for `totalProgress`; -1 while unknown
        std::string text;          ///< the event as it came
    };

    enum class channels {
        commands, ///< no events: `eventFd()` is -1
        events,   ///< no commands. The daemon may end although this client listens
        both,
    };

    /// The ports of the running daemon of this identifier, if there is one. Opens no connection: one that is
    /// closed again would end a daemon without a base port.
    static std::optional<ports> findDaemon(const std::string &identifier);

    /// Starts the daemon unless it runs, and waits until it listens. The daemon is detached: it has its own
    /// session, no standard streams, and keeps the caller's working directory and environment (DISPLAY!). Of
    /// several callers at the same time, one starts it.
    static startedDaemon startDaemon(const std::string &identifier, const daemonOptions &options);
    static startedDaemon startDaemon(const std::string &identifier);

    /// Ends the daemon and removes a lock file that it leaves behind. A daemon without a base port shuts down
    /// in order; one with a base port knows no such request and is sent SIGTERM, if it is a process of this
    /// user. Runs are saved when they end, so only the run that is shown is lost.
    static void stopDaemon(const std::string &identifier, milliseconds timeout = defaultTimeout);

    /// "/tmp/HalvornRunning_IDENTIFIER.lock".
    static std::string lockFilePath(const std::string &identifier);

    /// Connects to the running daemon of this identifier. `timeout` is also the one of every later call that
    /// takes none.
    explicit progressClient(const std::string &identifier, channels wanted = channels::both,
                            milliseconds timeout = defaultTimeout);
    progressClient(const ports &daemonPorts, channels wanted, milliseconds timeout = defaultTimeout);
    progressClient(progressClient &&) noexcept;
    progressClient &operator=(progressClient &&) noexcept;
    /// Closes the channels. A daemon without a base port ends with its last command channel.
    ~progressClient();

    // Progress. Slots are 0 to 9; captions, texts and labels hold no ";".

    /// Shows a bar at 0 percent; on a slot with a bar, starts it again. The bar reads "CAPTION PERCENT%".
    void createBar(int slot, std::string_view caption);
    /// `percent` is 0 to 100, or `givenUp`.
    void updateBar(int slot, int percent);
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

    /// Shows a box and waits for its answer. When the time is up the box stays on the screen, unheard.
    button ask(const question &box, milliseconds timeout = forever);
    /// Shows `text` as a failed assertion; the answer is yes, yesToAll, retry, abort or none.
    button reportAssertion(std::string_view text, milliseconds timeout = forever);

    /// Asks the daemon to end; only one without a base port does.
    void exitDaemon();

    /// Sends bytes as they are.
    void send(std::string_view message);

    /// Says that nothing more will be sent, and waits until the daemon has read everything and closed the
    /// command channel. Then only events are left to this object.
    void finish();

    // Events.

    /// The event channel's file descriptor, for poll(2) (POLLIN), or -1. Owned by the object; do not read it.
    /// When it is readable, call `handleEvents()`, or `nextEvent()` with a time-out of 0 until it gives none.
    int eventFd() const;
    /// The command channel's file descriptor, or -1: POLLOUT says that a command will not wait, POLLIN, while
    /// no box is open, that the daemon has hung up. Owned by the object.
    int commandFd() const;
    /// Waits for the next event. None when the time is up; an error (gone) when the daemon has hung up.
    std::optional<event> nextEvent(milliseconds timeout);
    /// Reads what has come (at most 4 KiB, so that a busy daemon cannot hold us), calls `handler` with each
    /// event of it and returns how many; does not wait. An error (gone) when there are none left and the
    /// daemon has hung up.
    std::size_t handleEvents(const std::function<void(const event &)> &handler);
    /// Opens the event channel anew; events in between are lost. A daemon stops serving an event channel when
    /// an older one closes, and this is the way out.
    void renewEventChannel();

private:
    struct connection;
    void sendBehindProgress(std::string_view message);
    void progress(std::string_view keyword);
    void progress(std::string_view keyword, int slot);
    void progress(std::string_view keyword, int slot, std::string_view text);
    button answer(milliseconds timeout);

    std::unique_ptr<connection> m_connection;
};
