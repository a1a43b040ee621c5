#pragma once

#include <QList>
#include <QString>

#include <vector>

class QWidget;
class fittedBar;
class fittedLabel;
struct dialogSlots;

/// The children of a fitted dialog: what they say, and which of them are shown, from top to bottom. They
/// stand in the slots, and nothing is owned.
class fittedChildren
{
public:
    /// A text line, a bar, or the buttons of slots that stand together.
    struct row {
        fittedLabel *text = nullptr;
        fittedBar *bar = nullptr;
        QList<QWidget *> buttons;
    };

    explicit fittedChildren(const dialogSlots &content) : m_content(content) {}

    /// Shows and hides them as the slots' flags say.
    void show() const;
    void useFonts(double scale) const;
    /// Says the new text of a slot; tells whether there is too little room for it.
    bool takeText(int id) const;
    /// Says which time is left, in the row of the only bar or in the total row; empty for none. Tells whether
    /// that makes the total row come or go.
    bool takeLeft(const QString &left);
    /// Goes on with what those of another dialog say and have taken of the window.
    void goOnFrom(const fittedChildren &src);
    /// Turns the pages of texts that scroll; false where the key does not, or none scrolls.
    bool scroll(int key) const;

    std::vector<row> rows() const;
    /// At the bottom of the window.
    QList<QWidget *> buttons() const;

private:
    fittedBar &bar(int id) const;
    fittedLabel &label(int id) const;
    fittedBar &totalBar() const;
    int shownBars() const;
    bool showsTotalRow() const;
    void tellLeft() const;
    QList<QWidget *> buttonsOf(const std::vector<int> &ids) const;

    const dialogSlots &m_content;
    QString m_left;
};
