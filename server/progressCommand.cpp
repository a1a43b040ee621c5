#include "server/progressCommand.h"

#include "server/limits.h"
#include "server/message.h"

#include <array>
#include <charconv>

namespace
{

enum class argumentKind : quint8 { none, slot, slotAndValue, slotAndText };

struct commandForm {
    QByteArrayView keyword;
    argumentKind arguments;
};

/// By verb; no keyword begins another one, and the first is by far the most frequent.
constexpr std::array forms{
    commandForm{"update:", argumentKind::slotAndValue}, commandForm{"messageStart", argumentKind::none},
    commandForm{"messageStop", argumentKind::none},     commandForm{"activate", argumentKind::none},
    commandForm{"busyOn", argumentKind::none},          commandForm{"busyOff", argumentKind::none},
    commandForm{"create:", argumentKind::slotAndText},  commandForm{"remove:", argumentKind::slot},
    commandForm{"addButt:", argumentKind::slotAndText}, commandForm{"delButt:", argumentKind::slot},
    commandForm{"addText:", argumentKind::slotAndText}, commandForm{"updateText:", argumentKind::slotAndText},
    commandForm{"delText:", argumentKind::slot},        commandForm{"pulse:", argumentKind::slot},
};
static_assert(forms.size() == static_cast<size_t>(progressVerb::pulse) + 1);

/// As the toolkit reads a number: blanks around it and a sign are fine, anything else is 0.
int number(QByteArrayView text, dialect from)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), value);
    if (error == std::errc() && end == text.end())
        return value;
    return decoded(text, from).toInt();
}

QString caption(QByteArrayView bytes, dialect from)
{
    QString text = decoded(bytes, from);
    if (text.size() > longestCaption) {
        const bool splitsPair = text[longestCaption - 1].isHighSurrogate();
        text.truncate(longestCaption - (splitsPair ? 1 : 0));
    }
    return text;
}

/// Two plain numbers, as nearly every command has them, need no searching.
bool readPlainNumbers(progressCommand &command, QByteArrayView text)
{
    const auto [semicolon, slotError] = std::from_chars(text.begin(), text.end(), command.slot);
    if (slotError != std::errc() || semicolon == text.end() || *semicolon != ';')
        return false;
    const auto [end, valueError] = std::from_chars(semicolon + 1, text.end(), command.value);
    return valueError == std::errc() && end == text.end();
}

bool readArguments(progressCommand &command, argumentKind kind, QByteArrayView text, dialect from)
{
    if (kind == argumentKind::slotAndValue && readPlainNumbers(command, text))
        return true;
    const qsizetype semicolon = text.indexOf(';');
    if (kind == argumentKind::slot) {
        command.slot = number(text, from);
        return semicolon < 0;
    }
    if (semicolon < 0)
        return false;
    command.slot = number(text.first(semicolon), from);
    const QByteArrayView rest = text.sliced(semicolon + 1);
    const bool takesRest = kind == argumentKind::slotAndText && from == dialect::local;
    if (!takesRest && rest.contains(';'))
        return false;
    if (kind == argumentKind::slotAndText)
        command.text = caption(rest, from);
    else
        command.value = number(rest, from);
    return true;
}

} // namespace

std::optional<progressCommand> readProgress(QByteArrayView payload, dialect from)
{
    for (size_t i = 0; i < forms.size(); ++i) {
        const commandForm &form = forms[i];
        if (!beginsWith(payload, form.keyword))
            continue;
        progressCommand command{static_cast<progressVerb>(i), 0, 0, {}};
        if (form.arguments != argumentKind::none &&
            !readArguments(command, form.arguments, payload.sliced(form.keyword.size()), from))
            return std::nullopt;
        return command;
    }
    return std::nullopt;
}
