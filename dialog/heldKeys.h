#pragma once

#include <QHash>

#include <optional>

class QKeyEvent;

/// A key that was let go, by the name that it had when it went down (Backtab is Tab once Shift is up), or
/// that repeats because it is held.
struct keyStroke {
    int key;
    bool isRepetition;
};

/// The keys that went down on a window and are still held.
///
/// The display repeats a held key as releases and presses of the same moment, and the toolkit, which looks
/// for the press when it sees the release, misses most of those that are still under way. So where the
/// display says that a released key is down, the press that follows decides: only one of the same key and
/// moment repeats.
class heldKeys
{
public:
    /// What a press, of whichever key, reveals about the release before it.
    std::optional<keyStroke> pressed(const QKeyEvent &event);
    /// Nothing for a key that went down elsewhere, or that has not been let go for certain; then perhaps the
    /// stroke before it.
    std::optional<keyStroke> released(const QKeyEvent &event);
    void clear();

private:
    std::optional<keyStroke> decide(bool isRepetition);

    /// By scan code.
    QHash<quint32, int> m_held;
    /// The release, 0 for none, that the next press decides about, and its time.
    quint32 m_undecided = 0;
    quint64 m_undecidedTime = 0;
};
