#pragma once

#include <vector>

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

    /// What is shown together.
    struct group {
        int leader; ///< -1 where all that is shown belongs together, and for those without one
        std::vector<int> ids;
    };

    static bool isSlot(int id) { return id >= 0 && id < MAX_ENTRIES; }
    bool hasRow(int id) const { return isSlot(id) && bars[id]; }
    bool hasButton(int id) const { return isSlot(id) && buttons[id]; }
    bool showsBar(int id) const { return barVisible[id] && !labelVisible[id]; }
    /// A text line, a bar or a button.
    bool showsAny(int id) const { return labelVisible[id] || barVisible[id] || buttonVisible[id]; }
    void join(int id, int leaderId);
    /// A slot that shows nothing stands with no other.
    void leaveIfEmpty(int id);
    /// All slots that show something, the groups in the order in which they came.
    std::vector<group> groups() const;
    /// The leader of the group that a slot is shown in.
    int groupOf(int id) const;
    bool hasContent() const;
    /// The same, of the slots that are not finished.
    bool hasUnfinished() const;
};
