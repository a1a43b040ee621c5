#pragma once

#include "server/message.h"
#include "wire/words.h"

#include <optional>

using wire::progressVerb;

/// One command, read. The slot is whatever number the client sent.
struct progressCommand {
    progressVerb verb;
    int slot = 0;
    int value = 0;
    /// At most `longestCaption` characters.
    QString text;
    /// 0 for what is none.
    std::int64_t amount = 0;
};

/// Reads the payload of a progress message. None for an unknown keyword or a wrong number of arguments. What
/// is no number counts as 0. In the local dialect the last text takes the rest, semicolons included.
std::optional<progressCommand> readProgress(std::string_view payload, dialect from);
