#include "server/receiver.h"

#include "dialog/CProgressDialog.h"
#include "server/limits.h"
#include "widgets/busyWidget.h"

#include <QStringTokenizer>
#include <QStringView>
#include <QVarLengthArray>

namespace
{

using arguments = QVarLengthArray<QStringView, 3>;

CProgressDialog &dialog()
{
    return *receiver::m_progress;
}

/// Splits off one part more than `wanted` at most: then there are too many anyway.
arguments split(QStringView text, int wanted)
{
    arguments parts;
    for (const QStringView part : text.tokenize(u';')) {
        parts.append(part);
        if (parts.size() > wanted)
            break;
    }
    return parts;
}

QString caption(QStringView text)
{
    return text.left(longestCaption).toString();
}

int number(QStringView text)
{
    return text.toInt();
}

} // namespace

struct receiver::progressCommand {
    QLatin1String keyword;
    /// Number of parts after the keyword; a command with another number is ignored.
    int parts;
    void (*run)(receiver &self, const arguments &args);
};

void receiver::doProgress(const QString &description)
{
    using args = const arguments &;
    static constexpr auto key = [](const char *text) { return QLatin1String(text); };
    static const progressCommand commands[] = {
        {key("messageStart"), 0, [](receiver &, args) { messageStart(); }},
        {key("messageStop"), 0, [](receiver &, args) { messageStop(); }},
        {key("activate"), 0,
         [](receiver &self, args) {
             self.activate();
             sendEvent(QStringLiteral("isActivated"));
         }},
        {key("busyOn"), 0, [](receiver &, args) { busyOn(); }},
        {key("busyOff"), 0, [](receiver &, args) { busyOff(); }},
        {key("update:"), 2, [](receiver &, args a) { dialog().updateBar(number(a[0]), number(a[1])); }},
        {key("create:"), 2, [](receiver &, args a) { dialog().createBar(number(a[0]), caption(a[1])); }},
        {key("remove:"), 1, [](receiver &, args a) { dialog().removeBar(number(a[0])); }},
        {key("addButt:"), 2, [](receiver &, args a) { dialog().addButton(number(a[0]), caption(a[1])); }},
        {key("delButt:"), 1, [](receiver &, args a) { dialog().removeButton(number(a[0])); }},
        {key("addText:"), 2, [](receiver &, args a) { dialog().createText(number(a[0]), caption(a[1])); }},
        {key("updateText:"), 2, [](receiver &, args a) { dialog().updateText(number(a[0]), caption(a[1])); }},
        {key("delText:"), 1, [](receiver &, args a) { dialog().removeText(number(a[0])); }},
    };

    createWindows();
    for (const progressCommand &command : commands) {
        if (!description.startsWith(command.keyword))
            continue;
        arguments parts;
        if (command.parts > 0)
            parts = split(QStringView(description).sliced(command.keyword.size()), command.parts);
        if (parts.size() == command.parts)
            command.run(*this, parts);
        return;
    }
}

/// The first progress message brings the busy window and the dialog into being, both hidden.
void receiver::createWindows()
{
    if (m_progress)
        return;
    m_splash = new busyWidget;
    connect(m_splash, &busyWidget::pressed, this, &receiver::toggle);
    m_progress = new CProgressDialog;
}

void receiver::messageStart()
{
    m_progress->willCancel();
    if (m_progress->isVisible())
        m_progress->hide();
}

void receiver::messageStop()
{
    m_progress->willCancel();
    if (m_windowIsActive && !m_progress->isVisible())
        BringWindowToFront();
}

void receiver::busyOn()
{
    if (busyWidget::hasPosition()) {
        m_splash->movePosition();
        m_splash->show();
    }
    m_busyActive = true;
}

void receiver::busyOff()
{
    if (!m_windowIsActive)
        m_splash->hide();
    m_busyActive = false;
}
