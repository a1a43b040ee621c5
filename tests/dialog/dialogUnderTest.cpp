#include "tests/dialog/dialogUnderTest.h"

#include <functional>

void showingHost::progressVisibilityChanged(bool isVisible)
{
    m_dialog->setVisible(isVisible);
    if (isVisible)
        m_dialog->activateWindow();
}

void dialogUnderTest::run(const QString &commands)
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
