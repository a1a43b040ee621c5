#include "server/progressCommand.h"

#include "wire/recordLine.h"

#include <charconv>

namespace
{

using wire::argumentKind;

/// As the toolkit reads a number: blanks around it and a sign are fine, anything else is 0.
int number(std::string_view text, dialect from)
{
    int value = 0;
    const char *const textEnd = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), textEnd, value);
    if (error == std::errc() && end == textEnd)
        return value;
    return decoded(text, from).toInt();
}

QString caption(std::string_view bytes, dialect from)
{
    QString text = decoded(bytes, from);
    if (text.size() > longestCaption) {
        const bool splitsPair = text[longestCaption - 1].isHighSurrogate();
        text.truncate(longestCaption - (splitsPair ? 1 : 0));
    }
    return text;
}

/// Two plain numbers, as nearly every command has them, need no searching.
bool readPlainNumbers(progressCommand &command, std::string_view text)
{
    const char *const textEnd = text.data() + text.size();
    const auto [semicolon, slotError] = std::from_chars(text.data(), textEnd, command.slot);
    if (slotError != std::errc() || semicolon == textEnd || *semicolon != ';')
        return false;
    const auto [end, valueError] = std::from_chars(semicolon + 1, textEnd, command.value);
    return valueError == std::errc() && end == textEnd;
}

bool readArguments(progressCommand &command, argumentKind kind, std::string_view text, dialect from)
{
    if (kind == argumentKind::slotAndValue && readPlainNumbers(command, text))
        return true;
    if (kind == argumentKind::amount) {
        command.amount = wire::readAmount(text);
        return true;
    }
    const size_t semicolon = text.find(';');
    command.slot = number(text.substr(0, semicolon), from);
    if (kind == argumentKind::slot || semicolon == text.npos)
        return kind == argumentKind::slot && semicolon == text.npos;
    const std::string_view rest = text.substr(semicolon + 1);
    const bool takesRest = kind == argumentKind::slotAndText && from == dialect::local;
    if (!takesRest && rest.find(';') != rest.npos)
        return false;
    if (kind == argumentKind::slotAndText)
        command.text = caption(rest, from);
    else
        command.value = number(rest, from);
    return true;
}

} // namespace

std::optional<progressCommand> readProgress(std::string_view payload, dialect from)
{
    for (size_t i = 0; i < wire::progressForms.size(); ++i) {
        const wire::progressForm &form = wire::progressForms[i];
        if (!wire::beginsWith(payload, form.keyword))
            continue;
        progressCommand command{static_cast<progressVerb>(i), 0, 0, {}};
        if (form.arguments != argumentKind::none &&
            !readArguments(command, form.arguments, payload.substr(form.keyword.size()), from))
            return std::nullopt;
        return command;
    }
    return std::nullopt;
}
