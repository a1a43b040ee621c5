#include "tests/dialog/dialogUnderTest.h"

#include "widgets/appearance.h"

#include <QFontMetrics>
#include <QTest>

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

QString dialogUnderTest::content() const
{
    QStringList shown;
    for (qsizetype i = 0; i < bars().size(); ++i) {
        if (!labels()[i]->isHidden())
            shown << QStringLiteral("%1:%2").arg(i).arg(labels()[i]->text());
        if (!bars()[i]->isHidden())
            shown << QStringLiteral("%1:%2%3").arg(i).arg(bars()[i]->format()).arg(bars()[i]->value());
    }
    for (qsizetype i = 0; i < buttons().size(); ++i) {
        if (!buttons()[i]->isHidden())
            shown << QStringLiteral("[%1:%2]").arg(i).arg(buttons()[i]->text());
    }
    return shown.join(' ');
}

QString dialogUnderTest::focus() const
{
    if (focusWidget() == hideButton())
        return QStringLiteral("hide");
    for (qsizetype i = 0; i < buttons().size(); ++i) {
        if (focusWidget() == buttons()[i])
            return QString::number(i);
    }
    return QStringLiteral("none");
}

void resetSettings()
{
    appearance.m_desktopWidth = 640;
    appearance.m_desktopHeight = 480;
    appearance.m_paintOffsetX = appearance.m_paintOffsetY = 0;
    appearance.m_busyXpos = appearance.m_busyYpos = -1;
    appearance.m_modal_dialog = true;
    appearance.m_dialog_flags = m_modal_flags;

    QFont &font = appearance.m_barNumFont;
    for (int pixels = 1; QFontMetrics(font).lineSpacing() != 16 && pixels < 30; ++pixels)
        font.setPixelSize(pixels);
    QCOMPARE(QFontMetrics(font).lineSpacing(), 16);
}
