// Bytes from clients, through the sockets, with all handlers behind the framing. A control character ends a
// piece and says what happens then.

#include "tests/fuzz/daemonSession.h"

#include <cstdint>

namespace
{

void handlePiece(daemonSession &session, std::string_view piece, char end)
{
    if (end == '\x02') {
        session.sendOnEventChannel(piece);
        return;
    }
    session.sendCommands(piece);
    switch (end) {
    case '\x03':
        session.acceptBox();
        break;
    case '\x04':
        session.rejectBox();
        break;
    case '\x05':
        session.clickButtons();
        break;
    case '\x06':
        session.pressBusyWindow();
        break;
    case '\x07':
        session.tick();
        break;
    case '\x08':
        session.toggleEventChannel();
        break;
    default:
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    daemonSession::prepareProcess();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    std::string_view input(reinterpret_cast<const char *>(data), size);
    daemonSession session;
    while (!input.empty()) {
        const std::size_t end = input.find_first_of("\x01\x02\x03\x04\x05\x06\x07\x08");
        const bool isLast = end == std::string_view::npos;
        handlePiece(session, input.substr(0, end), isLast ? '\x01' : input[end]);
        input.remove_prefix(isLast ? input.size() : end + 1);
    }
    return 0;
}
