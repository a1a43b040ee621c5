#pragma once

#include "dialog/CProgressDialog.h"
#include "dialog/dialogHost.h"
#include "widgets/appearance.h"
#include "widgets/progressButton.h"
#include "widgets/progressLabel.h"
#include "widgets/progressProcess.h"

#include <functional>
#include <utility>

/// A host that shows and hides its dialog.
class showingHost : public dialogHost
{
public:
    void progressVisibilityChanged(bool isVisible) override
    {
        m_dialog->setVisible(isVisible);
        if (isVisible)
            m_dialog->activateWindow();
    }
    void runChanged(bool) override {}
    void updateTotalPercent(int, int) override {}
    void clicked(int) override {}
    void closed() override {}
    bool isInputBlocked() const override { return false; }

    CProgressDialog *m_dialog = nullptr;
};

/// A dialog seen from outside, through its children, which their order tells apart.
class dialogUnderTest : public showingHost, public CProgressDialog
{
public:
    /// Shows what the commands say.
    explicit dialogUnderTest(const QString &commands = {}) : CProgressDialog(static_cast<dialogHost &>(*this))
    {
        m_dialog = this;
        run(commands);
    }

    /// Carries out content commands of the protocol, with blanks between them.
    void run(const QString &commands)
    {
        const std::pair<const char *, std::function<void(int, const QString &)>> known[] = {
            {"create", [this](int id, const QString &text) { createBar(id, text); }},
            {"remove", [this](int id, const QString &) { removeBar(id); }},
            {"update", [this](int id, const QString &text) { updateBar(id, text.toInt()); }},
            {"addText", [this](int id, const QString &text) { createText(id, text); }},
            {"updateText", [this](int id, const QString &text) { updateText(id, text); }},
            {"addButt", [this](int id, const QString &text) { addButton(id, text); }},
            {"delButt", [this](int id, const QString &) { removeButton(id); }},
        };
        for (const QString &command : commands.split(' ', Qt::SkipEmptyParts)) {
            const QString arguments = command.section(':', 1);
            for (const auto &[name, carryOut] : known) {
                if (command.section(':', 0, 0) == name)
                    carryOut(arguments.section(';', 0, 0).toInt(), arguments.section(';', 1));
            }
        }
    }

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
