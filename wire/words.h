#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// The words of the protocol, each in one place. Whoever adds one adds it here, to the enumeration and to the
/// table behind it, which stand in the same order; the compiler then says where it is to be handled.
namespace wire
{

/// Rows and buttons are numbered from 0 to one less.
inline constexpr int slotCount = 10;
/// As a bar's percent: the bar is given up.
inline constexpr int givenUpPercent = -1;
/// Of work that a run has to do.
inline constexpr std::int64_t largestAmount = std::int64_t{1} << 53;
/// Stands between the fields of a box.
inline constexpr std::string_view fieldSeparator = "[#]";

// Progress commands.

enum class progressVerb : unsigned char {
    update,
    messageStart,
    messageStop,
    activate,
    busyOn,
    busyOff,
    create,
    remove,
    addButt,
    delButt,
    addText,
    updateText,
    delText,
    pulse,
    amount,
    finish,
    join,
};

/// What stands behind a keyword, separated by ";".
enum class argumentKind : unsigned char { none, slot, slotAndValue, slotAndText, amount };

struct progressForm {
    std::string_view keyword;
    argumentKind arguments;
};

/// By verb. No keyword begins another one, and the first is by far the most frequent.
inline constexpr std::array progressForms{
    progressForm{"update:", argumentKind::slotAndValue},
    progressForm{"messageStart", argumentKind::none},
    progressForm{"messageStop", argumentKind::none},
    progressForm{"activate", argumentKind::none},
    progressForm{"busyOn", argumentKind::none},
    progressForm{"busyOff", argumentKind::none},
    progressForm{"create:", argumentKind::slotAndText},
    progressForm{"remove:", argumentKind::slot},
    progressForm{"addButt:", argumentKind::slotAndText},
    progressForm{"delButt:", argumentKind::slot},
    progressForm{"addText:", argumentKind::slotAndText},
    progressForm{"updateText:", argumentKind::slotAndText},
    progressForm{"delText:", argumentKind::slot},
    progressForm{"pulse:", argumentKind::slot},
    progressForm{"amount:", argumentKind::amount},
    progressForm{"finish:", argumentKind::slot},
    progressForm{"join:", argumentKind::slotAndValue},
};
static_assert(progressForms.size() == static_cast<std::size_t>(progressVerb::join) + 1);

constexpr const progressForm &formOf(progressVerb verb)
{
    return progressForms[static_cast<std::size_t>(verb)];
}

// Settings.

enum class setting : unsigned char {
    windowFonts,
    busyIndicator,
    paintOffset,
    screenGeometry,
    windowTitle,
    windowPixmap,
    windowIcon,
    windowStyle,
    windowControls,
    windowModal,
    windowLayout,
    windowTheme,
    windowText,
    windowWidth,
    windowImage,
    windowMarkup,
    busyPlace,
    estimate,
};

enum class valueKind : unsigned char { text, numbers, fonts, colours, words };

struct settingForm {
    std::string_view key; ///< without the "=" behind it
    valueKind value;
    /// Of `valueKind::words`: what the value may be. The daemon's enumerations have the same order.
    std::array<std::string_view, 3> words = {};
};

/// By setting. Fields of numbers, fonts and colours are separated by "|", those of a screen by ",".
inline constexpr std::array settingForms{
    settingForm{"windowFonts", valueKind::fonts},
    settingForm{"busyIndicator", valueKind::text},
    settingForm{"paintOffset", valueKind::numbers},
    settingForm{"screenGeometry", valueKind::numbers},
    settingForm{"windowTitle", valueKind::text},
    settingForm{"windowPixmap", valueKind::text},
    settingForm{"windowIcon", valueKind::text},
    settingForm{"windowStyle", valueKind::colours},
    settingForm{"windowControls", valueKind::colours},
    settingForm{"windowModal", valueKind::words, {"on", "off"}},
    settingForm{"windowLayout", valueKind::words, {"grid", "fitted"}},
    settingForm{"windowTheme", valueKind::words, {"light", "dark", "auto"}},
    settingForm{"windowText", valueKind::colours},
    settingForm{"windowWidth", valueKind::numbers},
    settingForm{"windowImage", valueKind::text},
    settingForm{"windowMarkup", valueKind::words, {"off", "on"}},
    settingForm{"busyPlace", valueKind::words, {"none", "centre"}},
    settingForm{"estimate", valueKind::words, {"exact", "adaptive"}},
};
static_assert(settingForms.size() == static_cast<std::size_t>(setting::estimate) + 1);

constexpr const settingForm &formOf(setting which)
{
    return settingForms[static_cast<std::size_t>(which)];
}

/// The setting of this key; none for an unknown one.
constexpr std::optional<setting> settingNamed(std::string_view key)
{
    for (std::size_t i = 0; i < settingForms.size(); ++i) {
        if (settingForms[i].key == key)
            return static_cast<setting>(i);
    }
    return std::nullopt;
}

/// The number of `word` among the words of this setting.
constexpr std::optional<std::size_t> wordIndex(setting which, std::string_view word)
{
    const auto &words = formOf(which).words;
    for (std::size_t i = 0; i < words.size() && !words[i].empty(); ++i) {
        if (words[i] == word)
            return i;
    }
    return std::nullopt;
}

// Events.

enum class eventKind : unsigned char {
    isShown,
    isHidden,
    isActivated,
    clicked,
    totalProgress,
    shutDown,
    closed, ///< heard on local channels only
};

/// By kind: the whole event, or what stands in front of its numbers ("clicked:3", "totalProgress=40|12").
inline constexpr std::array<std::string_view, 7> eventNames{
    "isShown", "isHidden", "isActivated", "clicked:", "totalProgress=", "shutDown", "closed",
};
static_assert(eventNames.size() == static_cast<std::size_t>(eventKind::closed) + 1);

constexpr std::string_view nameOf(eventKind kind)
{
    return eventNames[static_cast<std::size_t>(kind)];
}

// Boxes.

/// A button's number has this bit where Return is to press it.
inline constexpr unsigned presetFlag = 0x100;
/// Buttons that a box has at most.
inline constexpr std::size_t mostButtons = 10;

struct button {
    std::string_view name; ///< as people write it; parts are separated by "-"
    unsigned number;       ///< in a box and in its answer, where 0 is none
    bool accepts;          ///< says yes rather than no
};

inline constexpr button buttons[] = {
    {"ok", 0x400, true},
    {"yes", 0x4000, true},
    {"yes-to-all", 0x8000, true},
    {"no", 0x10000, false},
    {"no-to-all", 0x20000, false},
    {"cancel", 0x400000, false},
    {"close", 0x200000, false},
    {"abort", 0x40000, false},
    {"retry", 0x80000, true},
    {"ignore", 0x100000, true},
    {"save", 0x800, true},
    {"save-all", 0x1000, true},
    {"discard", 0x800000, false},
    {"open", 0x2000, true},
    {"apply", 0x2000000, true},
    {"reset", 0x4000000, true},
    {"restore-defaults", 0x8000000, true},
    {"help", 0x1000000, true},
};

/// A box's pictures, by their numbers.
inline constexpr std::array<std::string_view, 5> icons{"none", "information", "warning", "critical",
                                                       "question"};

} // namespace wire
