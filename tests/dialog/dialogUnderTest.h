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
    void runChanged(bool) override {}
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

    /// Carries out content commands of the protocol, with blanks between them.
    void run(const QString &commands);

    // Without the total bar's and the Hide button, which come first.
    QList<progressLabel *> labels() const { return childrenBehindTheFirst<progressLabel>(); }
    QList<progressProcess *> bars() const { return childrenBehindTheFirst<progressProcess>(); }
    QList<progressButton *> buttons() const { return childrenBehindTheFirst<progressButton>(); }

private:
    template <typename Child> QList<Child *> childrenBehindTheFirst() const
    {
        return findChildren<Child *>(Qt::FindDirectChildrenOnly).mid(1);
    }
};
