#pragma once

#include "progressError.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The commands of a daemon: what its windows are to show. `progressClient` sends each at once,
/// `progressBatch` collects them.
///
/// Texts are UTF-8. What cannot be carried is replaced, so that no data of yours is an error: zero bytes are
/// left out, a closing tag ("</progress>") gets a character without a width, a ";" in a setting's value is
/// shown as its look-alike, a text of more than 64 KiB is cut (the daemon shows 4096 characters), a percent
/// or an amount is held in its range. A slot outside 0 to 9 and a key with ";" or "=" in it are errors
/// (badArgument).
class PROGRESSCLIENT_EXPORT progressCommands
{
public:
    /// Slots for bars, texts and buttons run from 0 to one less.
    static constexpr int slotCount = 10;
    /// As a bar's percent: the bar is given up. The daemon shows it full.
    static constexpr int givenUp = -1;

    virtual ~progressCommands();

    /// Shows a bar at 0 percent; on a slot with a bar, starts it again. The bar reads "CAPTION PERCENT%".
    void createBar(int slot, std::string_view caption);
    /// `percent` is 0 to 100, or `givenUp`.
    void updateBar(int slot, int percent);
    /// The bar moves to and fro, without a percent, until the next `updateBar()`.
    void pulse(int slot);
    /// What stands in the slot stays, but the run does not wait for it: it ends, and is learned, when nothing
    /// else is left. For what waits for the user when the work is done.
    void finishSlot(int slot);
    /// Has the slot stand with another one, the `leader`, for as long as something stands in it: in a fitted
    /// dialog that shows anything else, their rows and buttons are together, below what was there before, and
    /// Escape on one of their buttons is a click on the leader's. The leader joins itself, too.
    void joinSlot(int slot, int leader);
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
    /// Says how much there is to do in this run (or the next, before its first content), in whatever unit the
    /// job counts, always the same: files, bytes. From 1 to 2⁵³; 0 takes it back. Runs of a known amount are
    /// estimated better; only the estimate "adaptive" looks at it.
    void setAmount(std::int64_t amount);

    /// Changes settings: pairs of a key without its "=", for example "windowTitle", and a value. Wants to
    /// come before the first progress command, which builds the dialog.
    void configure(const std::vector<std::pair<std::string, std::string>> &entries);

    /// Asks the daemon to end; only one without a base port does.
    void exitDaemon();

protected:
    progressCommands() = default;
    progressCommands(const progressCommands &) = default;
    progressCommands &operator=(const progressCommands &) = default;

private:
    /// Takes one whole message.
    virtual void tell(const std::string &message) = 0;
};

/// Commands that are to be sent in one piece, with `progressClient::send()`. An object is a value.
class PROGRESSCLIENT_EXPORT progressBatch : public progressCommands
{
public:
    bool isEmpty() const noexcept { return m_messages.empty(); }
    void clear() noexcept { m_messages.clear(); }
    const std::string &messages() const noexcept { return m_messages; }

private:
    void tell(const std::string &message) override;

    std::string m_messages;
};
