// What the client library reads on the local channel: events, answers and claims, in whatever order and
// shape.

#include "client/progressClient.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{

using namespace std::chrono_literals;
using client = progressClient;

constexpr char identifier[] = "fuzz";
char folder[] = "/dev/shm/fuzz-XXXXXX";
int listener = -1;

void removeFiles()
{
    unlink(client::socketPath(identifier).c_str());
    rmdir((std::string(folder) + "/progressd").c_str());
    rmdir(folder);
}

/// Says what it is given, and hangs up.
void answerWith(std::string_view text)
{
    const int channel = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (channel < 0)
        std::abort();
    const ssize_t sent = send(channel, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    static_cast<void>(sent);
    shutdown(channel, SHUT_WR);
    close(channel);
}

void checkEvent(const client::event &event)
{
    using kind = client::event::kind;
    const bool hasSlot = event.slot != -1;
    if (event.text.find("</event>") != std::string::npos || (hasSlot && event.what != kind::clicked))
        std::abort();
}

void read(client &window, int box)
{
    try {
        while (const auto event = window.nextEvent(0ms))
            checkEvent(*event);
        window.handleEvents(checkEvent);
    } catch (const client::error &) {
        // The other end has hung up.
    }
    try {
        window.answer(box, 0ms);
        window.answer(box, 0ms);
    } catch (const client::error &) {
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    if (!mkdtemp(folder) || setenv("XDG_RUNTIME_DIR", folder, 1) != 0 ||
        mkdir((std::string(folder) + "/progressd").c_str(), 0700) != 0)
        std::abort();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    client::socketPath(identifier).copy(address.sun_path, sizeof address.sun_path - 1);
    listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        listen(listener, 1) != 0)
        std::abort();
    return std::atexit(removeFiles);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    client window(identifier);
    window.listen();
    const int box = window.openAssertion("it broke");
    answerWith({reinterpret_cast<const char *>(data), size});
    read(window, box);
    try {
        window.claim();
    } catch (const client::error &) {
    }
    return 0;
}
