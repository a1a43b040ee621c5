#pragma once

#include "dialog/CProgressDialog.h"
#include "server/receiver.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/progressProcess.h"

#include <QTcpSocket>

/// A dialog seen from outside, through its children, which their order tells apart. It is the active one
/// while it lives, or until another is made.
class dialogUnderTest : public CProgressDialog
{
public:
    dialogUnderTest();
    ~dialogUnderTest() override;

    using CProgressDialog::eventFilter;

    /// Carries out content commands of the protocol, with blanks between them.
    void run(const QString &commands);

    QList<progressLabel *> labels() const { return childrenBehindTheFirst<progressLabel>(); }
    QList<progressProcess *> bars() const { return childrenBehindTheFirst<progressProcess>(); }
    QList<progressButton *> buttons() const { return childrenBehindTheFirst<progressButton>(); }
    // Those are without these, which come first.
    progressProcess *totalBar() const { return findChild<progressProcess *>(); }
    progressButton *hideButton() const { return findChild<progressButton *>(); }

    /// What the slots show, for instance "0:text 1:bar 50 [2:Stop]".
    QString content() const;
    /// Name of the child that would get the keys: "0" to "9", "hide" or "none".
    QString focus() const;

private:
    template <typename Child> QList<Child *> childrenBehindTheFirst() const
    {
        return findChildren<Child *>(Qt::FindDirectChildrenOnly).mid(1);
    }

    CProgressDialog *m_formerDialog;
    busyWidget *m_formerSplash;
};

/// An event channel inside the test.
class eventListener
{
public:
    eventListener();
    /// The events since the last call, without the tags and with blanks between them.
    QString events();

private:
    receiver m_server{0, true};
    QTcpSocket m_socket;
};

/// Back to the defaults, with a font for the bars whose line spacing is 16 pixels.
void resetSettings();
