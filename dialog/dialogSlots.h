#pragma once

#include <array>

class QPushButton;
class progressButton;
class progressLabel;
class progressProcess;

/// The children of a dialog and what its slots show. A slot's flags are the whole truth about its content:
/// the layout pass derives every widget's place and visibility from them. A bar takes its caption from the
/// label of its slot; a slot whose two flags are set shows the text line. The widgets belong to the window.
struct dialogSlots {
    enum { MAX_ENTRIES = 10 };

    progressLabel *m_totalLabel = nullptr;
    progressProcess *m_totalBar = nullptr;
    progressButton *m_hideButton = nullptr;

    bool labelVisible[MAX_ENTRIES] = {};
    bool barVisible[MAX_ENTRIES] = {};
    /// Null from `maxBars` on.
    progressLabel *labels[MAX_ENTRIES] = {};
    progressProcess *bars[MAX_ENTRIES] = {};
    bool buttonVisible[MAX_ENTRIES] = {};
    /// Null from `maxButtons` on.
    QPushButton *buttons[MAX_ENTRIES] = {};

    /// What stands in the slot stays, but is no part of the run any more.
    bool finished[MAX_ENTRIES] = {};

    /// Slots that stand together have the same leader, which is one of them; -1 for one that stands by
    /// itself.
    int leader[MAX_ENTRIES] = {-1, -1, -1, -1, -1, -1, -1, -1, -1, -1};
    /// Of leaders: the order of their coming, from 1 on.
    int coming[MAX_ENTRIES] = {};

    /// Slots that have widgets.
    int maxBars = MAX_ENTRIES;
    int maxButtons = MAX_ENTRIES;

    bool showsBar(int id) const { return barVisible[id] && !labelVisible[id]; }
    int shownButtons() const;
    void join(int id, int leaderId);
    /// A slot that shows nothing stands with no other.
    void leaveIfEmpty(int id);
    /// All, in the order in which they are shown.
    std::array<int, MAX_ENTRIES> order() const;
    /// The leader of those that this one is shown apart with, each group below the other; -1 where all that
    /// is shown belongs together.
    int groupOf(int id) const;
    /// Whether a text line, a bar or a button is shown.
    bool hasContent() const;
    /// The same, of the slots that are not finished.
    bool hasUnfinished() const;
};
