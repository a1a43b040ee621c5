#pragma once

#include "client/system.h"
#include "progressctl/common.h"
#include "progressctl/theme.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

struct pipeOptions {
    std::string title;   ///< of the window, if the daemon is started here; empty: none was given
    std::string caption; ///< of the bar; empty: the title
    std::string text;
    lookOptions look;
    std::string windowIcon; ///< a file
    std::string iconName;
    int width = 0; ///< least one, in pixels; 0: as the content asks for
    std::string cancelLabel = "Cancel";
    std::string okLabel = "OK";
    std::vector<std::string> extraLabels;
    std::optional<std::string> learnName;
    int slot = -1; ///< -1: any that is free
    int percentage = 0;
    bool isModal = false;
    bool hasCancel = true;
    bool hasMarkup = true;
    bool pulsates = false;
    bool autoClose = false;
    bool autoKill = false;
    bool waitForOk = false;
    bool showsRemaining = false;
    bool expectsComplete = false;
    int cancelStatus = 1;
    double timeoutSeconds = 0; ///< 0: none
    std::vector<std::string> command;
};

/// What a bar and the text below it tell.
struct pipeContent {
    int percent = 0;
    std::string text;
    bool pulsates = false;

    bool operator==(const pipeContent &other) const
    {
        return percent == other.percent && pulsates == other.pulsates && text == other.text;
    }
};

/// The window of a pipe: on the daemon that runs, in slots of its own, or on one that is started for it and
/// ends with it.
class pipeWindow
{
public:
    /// Throws `progressClient::error` or `failure` when there can be none.
    pipeWindow(const commonOptions &common, const pipeOptions &options);

    /// For poll(2): POLLIN: call `handleEvents()`; POLLOUT: `show()` will not wait.
    int fd() const { return m_client->fd(); }
    const pipeContent &shown() const { return m_shown; }
    /// By the daemon's estimate; -1 while it has none.
    int remainingSeconds() const { return m_remaining; }

    void show(const pipeContent &wanted);
    /// The run ends here, and is forgotten unless it `isWorthLearning`. What was shown stays, with one button
    /// that ends the waiting, and is learned by no daemon.
    void offerOk(bool isWorthLearning);
    /// What the user has done last.
    enum class deed { nothing, pressedButton, pressedExtra, closed };
    deed handleEvents();
    const std::string &pressedLabel() const { return m_pressedLabel; }
    /// Takes the content away. A daemon that was started here ends; it forgets the run unless it
    /// `isWorthLearning`.
    void close(bool isWorthLearning);

private:
    void startOwnDaemon();
    settingEntries ownSettings() const;
    std::string learnName() const;
    std::string caption() const;
    void showContent();
    void showButtons(const std::string &label);
    void showText(const std::string &text);
    void takeAway(bool isWorthLearning);
    void send();
    std::optional<int> slotAt(std::size_t index);
    int nextSlot();
    deed deedOf(const progressClient::event &each);

    const commonOptions &m_common;
    const pipeOptions &m_options;
    std::optional<progressClient> m_client;
    std::unique_ptr<processHandle> m_ownDaemon;
    progressBatch m_untold; ///< what `send()` sends
    std::vector<int>
        m_slots; ///< of the bar and its button; of the text and the first extra button; of the next
    bool m_isFullTold = false;
    pipeContent m_shown;
    bool m_hasText = false;
    bool m_hasButton = false;
    int m_remaining = -1;
    std::string m_pressedLabel;
};
