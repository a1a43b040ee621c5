// Bytes into messages and commands, without windows and sockets, beside plain readings of the same rules.

#include "server/limits.h"
#include "server/messageStream.h"
#include "server/progressCommand.h"

#include <QList>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

struct cutMessage {
    messageKind kind;
    std::string payload;

    bool operator==(const cutMessage &) const = default;
};

void expect(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// The rules of the local channel, read in the plainest way.
std::vector<cutMessage> plainly(std::string text)
{
    std::erase(text, '\0');
    std::vector<cutMessage> messages;
    for (std::size_t at = 0;;) {
        const messageTags *first = nullptr;
        std::size_t start = std::string::npos;
        for (const messageTags &tags : allTags) {
            if (const std::size_t found = text.find(tags.opening.data(), at); found < start) {
                start = found;
                first = &tags;
            }
        }
        if (!first)
            return messages;
        at = start + static_cast<std::size_t>(first->opening.size());
        if (first->closing.isEmpty()) {
            messages.push_back({first->kind, {}});
            continue;
        }
        const std::size_t end = text.find(first->closing.data(), at);
        if (end == std::string::npos)
            return messages;
        messages.push_back({first->kind, text.substr(at, end - at)});
        at = end + static_cast<std::size_t>(first->closing.size());
    }
}

/// In pieces whose sizes come from the input.
std::vector<cutMessage> inPieces(const std::string &text)
{
    std::vector<cutMessage> messages;
    messageStream stream;
    for (std::size_t at = 0, piece = 0; at < text.size(); at += piece) {
        piece = std::min<std::size_t>(text.size() - at, 1 + static_cast<unsigned char>(text[at]) % 61);
        text.copy(stream.reserve(static_cast<qsizetype>(piece)), piece, at);
        stream.commit(static_cast<qsizetype>(piece));
        while (const auto received = stream.next())
            messages.push_back({received->kind, received->payload.toByteArray().toStdString()});
    }
    return messages;
}

/// A port's command that has two arguments, as text: the numbers are the toolkit's.
void compareUpdate(const std::string &payload)
{
    const auto command = readProgress(payload, dialect::port);
    if (!payload.starts_with("update:"))
        return;
    const QStringList parts = QString::fromLatin1(payload).mid(7).split(';');
    expect(command.has_value() == (parts.size() == 2), "a command has as many arguments as it takes");
    if (command)
        expect(command->slot == parts[0].toInt() && command->value == parts[1].toInt(),
               "numbers are read alike");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char *>(data), size);
    const std::vector<cutMessage> messages = plainly(text);
    expect(inPieces(text) == messages, "pieces do not matter");
    for (const cutMessage &message : messages) {
        compareUpdate(message.payload);
        if (const auto command = readProgress(message.payload, dialect::local))
            expect(command->text.size() <= longestCaption, "texts are bounded");
    }
    return 0;
}
