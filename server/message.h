#pragma once

#include "wire/tags.h"

using wire::messageKind;

struct message {
    messageKind kind;
    /// The bytes between the tags; empty for a message that is one tag. Valid until its buffer is touched
    /// again.
    std::string_view payload;
};
