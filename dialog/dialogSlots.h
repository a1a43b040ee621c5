#pragma once

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

    /// Slots that have widgets.
    int maxBars = MAX_ENTRIES;
    int maxButtons = MAX_ENTRIES;

    bool showsBar(int id) const { return barVisible[id] && !labelVisible[id]; }
    int shownButtons() const;
    /// Whether a text line, a bar or a button is shown.
    bool hasContent() const;
    /// The same, of the slots that are not finished.
    bool hasUnfinished() const;
};
