#pragma once

#include "dialog/CProgressDialog.h"
#include "dialog/dialogHost.h"
#include "widgets/appearance.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/progressProcess.h"

#include <QStringList>

/// A host that shows and hides its dialog, and writes down what it was told.
class recordingHost : public dialogHost
{
public:
    void progressVisibilityChanged(bool isVisible) override;
    void updateTotalPercent(int currentPercent, int remainingSeconds) override;
    void clicked(int slot) override;
    void closed() override { m_events << QStringLiteral("closed"); }
    bool isInputBlocked() const override { return false; }

    /// What happened since the last call, with blanks between.
    QString events();

    CProgressDialog *m_dialog = nullptr;

private:
    QStringList m_events;
};

/// A dialog seen from outside, through its children, which their order tells apart.
class dialogUnderTest : public recordingHost, public CProgressDialog
{
public:
    dialogUnderTest();

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
};

/// Back to the defaults, with a font for the bars whose line spacing is 16 pixels.
void resetSettings();
