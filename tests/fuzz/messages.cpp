// Bytes into messages and commands, without windows and sockets, beside plain readings of the same rules.

#include "server/messageBuffer.h"
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

using namespace wire;

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
        if (first->closing.empty()) {
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

/// The rules of the ports, read in the plainest way: the first complete message of the first kind that has
/// one, again and again. What is left stays in `text`.
std::vector<cutMessage> plainlyFromPort(std::string &text)
{
    std::vector<cutMessage> messages;
    for (std::size_t kind = 0; kind < portKinds;) {
        const std::string opening = allTags[kind].opening.data();
        const std::string last = allTags[kind].closing.empty() ? opening : allTags[kind].closing.data();
        const std::size_t end = text.find(last);
        if (end == std::string::npos) {
            ++kind;
            continue;
        }
        const std::size_t start = text.find(opening) + opening.size();
        if (last == opening)
            messages.push_back({allTags[kind].kind, {}});
        else if (text.find(opening) < end)
            messages.push_back({allTags[kind].kind, text.substr(start, end - start)});
        text.erase(0, end + last.size());
        kind = 0;
    }
    return messages;
}

template <typename Buffer> std::vector<cutMessage> cutAll(Buffer &buffer)
{
    std::vector<cutMessage> messages;
    while (const auto received = buffer.next())
        messages.push_back({received->kind, std::string(received->payload)});
    return messages;
}

/// Calls with pieces whose sizes come from the input.
template <typename Take> void inPieces(const std::string &text, Take take)
{
    for (std::size_t at = 0, piece = 0; at < text.size(); at += piece) {
        piece = std::min<std::size_t>(text.size() - at, 1 + static_cast<unsigned char>(text[at]) % 61);
        take(text.substr(at, piece));
    }
}

std::vector<cutMessage> fromChannel(const std::string &text)
{
    std::vector<cutMessage> messages;
    messageStream stream;
    inPieces(text, [&](const std::string &piece) {
        const auto size = static_cast<qsizetype>(piece.size());
        piece.copy(stream.reserve(size), piece.size());
        stream.commit(size);
        for (cutMessage &each : cutAll(stream))
            messages.push_back(std::move(each));
    });
    return messages;
}

void comparePorts(const std::string &text)
{
    messageBuffer buffer;
    std::string plain;
    inPieces(text, [&](const std::string &piece) {
        buffer.append(QByteArrayView(piece.data(), static_cast<qsizetype>(piece.size())));
        plain += piece;
        expect(cutAll(buffer) == plainlyFromPort(plain),
               "a port's messages are cut as the plainest way does");
        expect(buffer.waiting() == static_cast<qsizetype>(plain.size()), "what is not cut waits");
    });
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
    expect(fromChannel(text) == messages, "pieces do not matter");
    comparePorts(text);
    for (const cutMessage &message : messages) {
        compareUpdate(message.payload);
        if (const auto command = readProgress(message.payload, dialect::local))
            expect(command->text.size() <= longestCaption, "texts are bounded");
    }
    return 0;
}
