#pragma once

#include "server/message.h"

#include <QList>
#include <QObject>

#include <functional>

class QMessageBox;
class activeDialog;
class windowOrder;

/// Tells the asker what was answered: the code of the button, 0 for none. Called once.
using answerFunction = std::function<void(quint32 code)>;
/// Makes the function that gets the answer of one box; called once for each box.
using askerFunction = std::function<answerFunction()>;

/// The modal boxes. A box is opened without a nested event loop: everything else goes on, and boxes can be
/// answered in any order. It blocks no window of the toolkit's; the dialog and the busy window take no input
/// while one is open. The run in progress is not learned.
class noticeBoxes : public QObject
{
public:
    noticeBoxes(activeDialog &active, windowOrder &order);

    /// Opens the box of an assertion, whose text is shown as it is, or that of a message, which says icon,
    /// title, text and buttons, with "[#]" between them. When `waiting` is deleted, nobody waits for the
    /// answer any more, and the box is taken away; without it the box stays until the user answers. While as
    /// many boxes are open as can be, a further one is answered with 0 at once.
    void open(messageKind kind, const QString &text, const answerFunction &answer, const QObject *waiting);
    /// Answers every open box with 0.
    void dismiss();
    qsizetype openCount() const { return m_open.size(); }

private:
    void close(QMessageBox *box);

    activeDialog &m_active;
    windowOrder &m_order;
    QList<QMessageBox *> m_open;
};
