// What the client library reads: the lock file, events, the answer to a box. The three are separated by a
// control character.

#include "client/progressClient.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace
{

using namespace std::chrono_literals;

/// A port that a client connects to; sends what it is given and hangs up.
class port
{
public:
    port()
    {
        socklen_t size = sizeof m_address;
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const auto address = reinterpret_cast<sockaddr *>(&m_address);
        if (bind(m_fd, address, size) != 0 || listen(m_fd, 4) != 0 || getsockname(m_fd, address, &size) != 0)
            std::abort();
    }

    int number() const { return ntohs(m_address.sin_port); }
    /// Takes the connection that waits.
    int accepted() const { return accept4(m_fd, nullptr, nullptr, SOCK_CLOEXEC); }

private:
    int m_fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in m_address{};
};

void sendAndHangUp(int channel, std::string_view bytes)
{
    send(channel, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    shutdown(channel, SHUT_WR);
}

/// So many connections must not linger.
void reset(int channel)
{
    const linger atOnce{1, 0};
    setsockopt(channel, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    close(channel);
}

std::string identifier()
{
    static const std::string own = "fuzz" + std::to_string(getpid());
    return own;
}

std::string lockFileInMemory()
{
    return "/dev/shm/lock-" + identifier();
}

void removeFiles()
{
    std::remove(progressClient::lockFilePath(identifier()).c_str());
    std::remove(lockFileInMemory().c_str());
}

void readLockFile(std::string_view content)
{
    const int file = open(lockFileInMemory().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0 || write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size()))
        std::abort();
    close(file);
    progressClient::findDaemon(identifier());
}

void checkEvent(const progressClient::event &event)
{
    using kind = progressClient::event::kind;
    const bool hasSlot = event.slot != -1;
    if (event.text.find("</event>") != std::string::npos || (hasSlot && event.what != kind::clicked))
        std::abort();
}

void readEvents(progressClient &client)
{
    try {
        client.handleEvents(checkEvent);
        while (const auto event = client.nextEvent(0ms))
            checkEvent(*event);
    } catch (const progressClient::error &) {
        // The harness has hung up.
    }
}

void readAnswer(progressClient &client)
{
    try {
        client.reportAssertion("it broke", 0ms);
    } catch (const progressClient::error &) {
    }
}

std::string_view takePart(std::string_view &input)
{
    const std::size_t end = std::min(input.find('\x01'), input.size());
    const std::string_view part = input.substr(0, end);
    input.remove_prefix(std::min(end + 1, input.size()));
    return part;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    if (symlink(lockFileInMemory().c_str(), progressClient::lockFilePath(identifier()).c_str()) != 0)
        std::abort();
    return std::atexit(removeFiles);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const port commandPort;
    static const port eventPort;
    std::string_view input(reinterpret_cast<const char *>(data), size);
    readLockFile(takePart(input));

    const progressClient::ports ports{commandPort.number(), eventPort.number()};
    progressClient client(ports, progressClient::channels::both);
    const int commands = commandPort.accepted();
    const int events = eventPort.accepted();
    sendAndHangUp(events, takePart(input));
    readEvents(client);
    sendAndHangUp(commands, input);
    readAnswer(client);
    reset(commands);
    reset(events);
    return 0;
}
