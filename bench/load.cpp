// usage: load COMMANDPORT EVENTPORT RATE SECONDS
//
// Ten clients each move a bar of their own RATE times a second, while ten others read the events. Every
// update changes the average of the bars by 1 or by -10, so there is one event for each, and one that is lost
// or out of place shows. Says "clicked NANOSECONDS" (of the monotonic clock) as soon as a click is heard, and
// at the end what was sent and heard.

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <netinet/tcp.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

using namespace std::chrono_literals;
using monotonic = std::chrono::steady_clock;

constexpr int channels = 10;

int connectTo(int port)
{
    const int channel = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(channel, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        std::perror("connect");
        std::exit(2);
    }
    const int on = 1;
    setsockopt(channel, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return channel;
}

/// Sends its updates in portions, up to a thousand a second; a late one is made up for.
class updater
{
public:
    updater(int port, int slot, int rate) : m_channel(connectTo(port)), m_slot(slot), m_rate(rate) {}

    void run(monotonic::time_point start, std::chrono::seconds duration)
    {
        const std::int64_t wanted = std::int64_t{m_rate} * duration.count();
        while (m_sent < wanted) {
            const auto now = monotonic::now();
            const std::chrono::duration<double> elapsed = now - start;
            sendUpTo(std::min(wanted, static_cast<std::int64_t>(m_rate * elapsed.count()) + 1));
            std::this_thread::sleep_until(now + 1ms);
        }
        m_seconds = std::chrono::duration<double>(monotonic::now() - start).count();
    }

    std::int64_t sent() const { return m_sent; }
    double seconds() const { return m_seconds; }

private:
    void sendUpTo(std::int64_t due)
    {
        std::string updates;
        for (; m_sent < due; ++m_sent)
            updates += "<progress>update:" + std::to_string(m_slot) + ';' +
                       std::to_string((m_sent + 1) % 11 * 10) + "</progress>";
        for (std::string_view left = updates; !left.empty();) {
            const ssize_t count = send(m_channel, left.data(), left.size(), MSG_NOSIGNAL);
            if (count <= 0) {
                std::perror("send");
                std::exit(2);
            }
            left.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    int m_channel;
    int m_slot;
    int m_rate;
    std::int64_t m_sent = 0;
    double m_seconds = 0;
};

class listener
{
public:
    listener(int port, bool tellsClicks) : m_channel(connectTo(port)), m_tellsClicks(tellsClicks) {}

    /// Returns when the channel has been shut.
    void run()
    {
        std::string received;
        char buffer[65536];
        for (ssize_t count; (count = recv(m_channel, buffer, sizeof buffer, 0)) > 0;) {
            received.append(buffer, static_cast<std::size_t>(count));
            received.erase(0, takeEvents(received));
        }
    }
    void shut() { shutdown(m_channel, SHUT_RDWR); }

    std::int64_t heard() const { return m_heard; }
    std::int64_t misplaced() const { return m_misplaced; }

private:
    std::size_t takeEvents(std::string_view received)
    {
        constexpr std::string_view opening = "<event>";
        constexpr std::string_view closing = "</event>";
        std::size_t taken = 0;
        for (std::size_t end; (end = received.find(closing, taken)) != std::string_view::npos;) {
            if (received.substr(taken, opening.size()) != opening)
                ++m_misplaced;
            else
                handle(received.substr(taken + opening.size(), end - taken - opening.size()));
            taken = end + closing.size();
        }
        return taken;
    }

    void handle(std::string_view event)
    {
        constexpr std::string_view percentEvent = "totalProgress=";
        if (m_tellsClicks && event.substr(0, 8) == "clicked:") {
            std::printf("clicked %lld\n",
                        static_cast<long long>(monotonic::now().time_since_epoch().count()));
            std::fflush(stdout);
        }
        if (event.substr(0, percentEvent.size()) != percentEvent)
            return;
        int percent = 0;
        std::from_chars(event.data() + percentEvent.size(), event.data() + event.size(), percent);
        if (const int step = percent - m_last; step != 1 && step != -10)
            ++m_misplaced;
        m_last = percent;
        ++m_heard;
    }

    int m_channel;
    bool m_tellsClicks;
    int m_last = 0;
    std::atomic<std::int64_t> m_heard = 0;
    std::atomic<std::int64_t> m_misplaced = 0;
};

/// Waits until all events are there; gives up when for two seconds nothing came.
void waitForEvents(const std::deque<listener> &listeners, std::int64_t expected)
{
    std::int64_t last = -1;
    for (auto since = monotonic::now(); monotonic::now() < since + 2s;) {
        std::int64_t heard = 0;
        for (const listener &each : listeners)
            heard += each.heard();
        if (heard == expected * channels)
            return;
        if (heard != last)
            since = monotonic::now();
        last = heard;
        std::this_thread::sleep_for(1ms);
    }
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 5) {
        std::fputs("usage: load COMMANDPORT EVENTPORT RATE SECONDS\n", stderr);
        return 2;
    }
    const int commandPort = std::atoi(argv[1]);
    const int eventPort = std::atoi(argv[2]);
    const std::chrono::seconds duration(std::atoi(argv[4]));
    std::deque<listener> listeners;
    std::vector<updater> updaters;
    for (int i = 0; i < channels; ++i) {
        listeners.emplace_back(eventPort, i == 0);
        updaters.emplace_back(commandPort, i, std::atoi(argv[3]));
    }
    std::this_thread::sleep_for(500ms);

    std::vector<std::thread> hearing;
    for (listener &each : listeners)
        hearing.emplace_back([&each] { each.run(); });
    std::vector<std::thread> sending;
    const auto start = monotonic::now();
    for (updater &each : updaters)
        sending.emplace_back([&each, start, duration] { each.run(start, duration); });
    for (std::thread &each : sending)
        each.join();

    std::int64_t sent = 0;
    double seconds = 0;
    for (const updater &each : updaters) {
        sent += each.sent();
        seconds = std::max(seconds, each.seconds());
    }
    waitForEvents(listeners, sent);
    const double behind = std::chrono::duration<double>(monotonic::now() - start).count() - seconds;
    for (listener &each : listeners)
        each.shut();
    for (std::thread &each : hearing)
        each.join();

    std::int64_t fewest = sent;
    std::int64_t misplaced = 0;
    for (const listener &each : listeners) {
        fewest = std::min(fewest, each.heard());
        misplaced += each.misplaced();
    }
    std::printf("sent %lld seconds %.2f behind %.3f fewest %lld misplaced %lld\n",
                static_cast<long long>(sent), seconds, behind, static_cast<long long>(fewest),
                static_cast<long long>(misplaced));
    return 0;
}
