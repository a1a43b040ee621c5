#include "tests/dialog/dialogUnderTest.h"

#include "widgets/busyWidget.h"

#include <QFontMetrics>
#include <QTest>

#include <functional>

dialogUnderTest::dialogUnderTest()
    : m_formerDialog(std::exchange(receiver::m_progress, this)),
      m_formerSplash(std::exchange(receiver::m_splash, new busyWidget))
{
}

dialogUnderTest::~dialogUnderTest()
{
    delete std::exchange(receiver::m_splash, m_formerSplash);
    receiver::m_progress = m_formerDialog;
    receiver::m_windowIsActive = false;
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

eventListener::eventListener()
{
    m_socket.connectToHost(QHostAddress::LocalHost, static_cast<quint16>(m_server.getPort()));
    m_socket.waitForConnected();
    // Accepted, too.
    m_socket.write("<progress>activate</progress>");
    if (!QTest::qWaitFor([this] { return m_socket.bytesAvailable() > 0; }))
        qFatal("no event channel");
    m_socket.readAll();
}

QString eventListener::events()
{
    receiver::sendEvent(QStringLiteral("end"));
    QByteArray text;
    const bool complete = QTest::qWaitFor([&] {
        text += m_socket.readAll();
        return text.endsWith("<event>end</event>");
    });
    if (!complete)
        return QStringLiteral("nothing came");
    text.chop(qsizetype(sizeof "<event>end</event>" - 1));
    return QString::fromLatin1(text.replace("</event>", " ").replace("<event>", "")).trimmed();
}

void resetSettings()
{
    receiver::m_desktopWidth = 640;
    receiver::m_desktopHeight = 480;
    receiver::m_paintOffsetX = receiver::m_paintOffsetY = 0;
    receiver::m_busyXpos = receiver::m_busyYpos = -1;
    m_modal_dialog = true;
    m_dialog_flags = m_modal_flags;

    QFont &font = receiver::m_barNumFont;
    for (int pixels = 1; QFontMetrics(font).lineSpacing() != 16 && pixels < 30; ++pixels)
        font.setPixelSize(pixels);
    QCOMPARE(QFontMetrics(font).lineSpacing(), 16);
}
