#include "tests/dialog/dialogUnderTest.h"

#include <functional>

void recordingHost::progressVisibilityChanged(bool isVisible)
{
    m_events << (isVisible ? QStringLiteral("isShown") : QStringLiteral("isHidden"));
    if (!m_dialog)
        return;
    m_dialog->setVisible(isVisible);
    if (isVisible)
        m_dialog->activateWindow();
}

void recordingHost::updateTotalPercent(int currentPercent, int remainingSeconds)
{
    m_events << QStringLiteral("totalProgress=%1|%2").arg(currentPercent).arg(remainingSeconds);
}

void recordingHost::clicked(int slot)
{
    m_events << QStringLiteral("clicked:%1").arg(slot);
}

QString recordingHost::events()
{
    return std::exchange(m_events, {}).join(' ');
}

dialogUnderTest::dialogUnderTest() : CProgressDialog(static_cast<dialogHost &>(*this))
{
    m_dialog = this;
}

void dialogUnderTest::run(const QString &commands)
{
    const std::pair<const char *, std::function<void(int, const QString &)>> known[] = {
        {"create", [this](int id, const QString &text) { createBar(id, text); }},
        {"remove", [this](int id, const QString &) { removeBar(id); }},
        {"update", [this](int id, const QString &text) { updateBar(id, text.toInt()); }},
        {"addText", [this](int id, const QString &text) { createText(id, text); }},
        {"updateText", [this](int id, const QString &text) { updateText(id, text); }},
        {"delText", [this](int id, const QString &) { removeText(id); }},
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
