#pragma once

#include "client/waiting.h"
#include "progressctl/common.h"
#include "progressctl/look.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A button beside OK and Cancel.
struct pipeButton {
    static constexpr int printsLabel = -1;

    std::string label;
    int status = printsLabel; ///< of the exit; `printsLabel`: 1, and the label is printed
};

struct pipeOptions {
    std::string title;   ///< of the window, if the daemon is started here; empty: none was given
    std::string caption; ///< of the bar; empty: the title
    std::string text;
    std::vector<std::string> bars; ///< labels of several bars; empty: there is one, with the caption
    lookOptions look;
    std::string icon;        ///< of the window: a file, or the name of an icon
    std::string image;       ///< beside the content, likewise
    int width = 0;           ///< least one, in pixels; 0: as the content asks for
    std::string cancelLabel; ///< empty: in the user's language
    std::string okLabel;     ///< likewise
    std::vector<pipeButton> buttons;
    std::optional<std::string> learnName;
    std::int64_t amount = 0; ///< 0: none was given
    int slot = -1;           ///< -1: any that is free
    int percentage = 0;
    bool staysOnTop = false; ///< of all windows, without a frame
    bool hasCancel = true;
    bool hasOk = true;
    bool hasMarkup = true;
    bool notifies = false; ///< the desktop, of the end of a long run that nobody looked at
    bool pulsates = false;
    bool autoClose = false;
    bool isGauge = false;
    bool keepsOpen = false;
    bool autoKill = false;
    std::optional<bool> usesTerminal; ///< none: where there is no display
    bool showsRemaining = false;
    bool expectsComplete = false;
    int cancelStatus = 1;
    double timeoutSeconds = 0; ///< 0 or less: none
    std::vector<std::string> command;

    /// Of all bars, at least one.
    std::vector<std::string> captions() const;
    /// Whether the window waits for the user when the input has ended.
    bool staysOpen() const { return command.empty() ? !autoClose && !isGauge : keepsOpen; }
};

struct pipeBar {
    int percent = 0;
    std::string caption;

    bool operator==(const pipeBar &) const = default;
};

/// What is shown of a pipe: its bars, at least one, and the text above the first.
struct pipeContent {
    std::vector<pipeBar> bars;
    std::string text;
    bool pulsates = false;   ///< the first bar
    std::int64_t amount = 0; ///< how much there is to do; 0: nobody has said so

    bool operator==(const pipeContent &) const = default;
};

/// What ends a pipe; its exit status follows.
enum class pipeEnd {
    inputEnded, ///< or its bar is full, and nobody is waited for
    inputFailed,
    timedOut,
    interrupted,
    windowGone,
    accepted, ///< by OK
    cancelled,
    pressedOther ///< another button
};

/// The window of a pipe: on the daemon that runs, in slots of its own, or on one that is started for it and
/// ends with it.
class pipeWindow
{
public:
    enum class place {
        screen,
        nowhere, ///< nothing is seen of it, but the daemon learns and estimates as ever
    };
    /// Throws `progressClient::error` or `failure` when there can be none.
    pipeWindow(const commonOptions &common, const pipeOptions &options, place where);

    /// For poll(2): POLLIN: call `handleEvents()`; POLLOUT: `show()` will not wait.
    int fd() const { return m_client->fd(); }
    /// Whether markup in the text is drawn.
    bool drawsMarkup() const
    {
        return m_ownDaemon && m_options.hasMarkup && m_options.look.layout == "fitted";
    }
    /// By the daemon's estimate; -1 while it has none.
    int remainingSeconds() const { return m_remaining; }

    void show(const pipeContent &content);
    /// What becomes of the run.
    enum class result {
        learned,
        failed,   ///< it is forgotten
        cancelled ///< likewise, and nobody is told: the user knows
    };
    /// Shows the OK button, from which Return takes the keyboard.
    void offerOk();
    /// The run ends here; what is shown stays.
    void endRun(result how);
    /// Throws when the daemon does not get round to its clients.
    void checkAlive() { m_client->checkAlive(); }
    /// The user's end, if there was one.
    std::optional<pipeEnd> handleEvents();
    /// The one that was pressed last, besides OK and Cancel.
    const pipeButton &pressedButton() const { return m_options.buttons[m_pressed]; }
    /// Takes the content away, and ends the run unless it has ended. A daemon that was started here ends.
    void close(result how);

private:
    bool findPlace();
    void startOwnDaemon(place where);
    settingEntries ownSettings() const;
    std::string learnName() const;
    void showContent();
    void showText(const std::string &text);
    void takeAway();
    void giveUp();
    void send() { m_client->send(m_untold); }
    std::size_t slotsWanted() const;
    bool takeSlots();
    pipeContent placed(pipeContent content) const;
    int slotOfBar(std::size_t index) const { return m_slots[index + 1]; }
    /// That of the first bar and Cancel.
    int leadingSlot() const { return slotOfBar(0); }
    /// What becomes of unclaimed slots when this program ends is the caller's business.
    bool claimsSlots() const { return m_ownDaemon || m_options.slot < 0; }
    std::optional<pipeEnd> endBy(const progressClient::event &each);

    const commonOptions &m_common;
    const pipeOptions &m_options;
    std::optional<progressClient> m_client;
    std::optional<processHandle> m_ownDaemon;
    progressBatch m_untold; ///< what `send()` sends
    /// Of the text and OK, of the first bar and Cancel, and of further bars and buttons. Rows stand in the
    /// order of their slots, and Return presses the button of the lowest.
    std::vector<int> m_slots;
    pipeContent m_shown;
    bool m_hasText = false;
    bool m_hasOk = false;
    bool m_runHasEnded = false;
    int m_remaining = -1;
    std::size_t m_pressed = 0;
};
