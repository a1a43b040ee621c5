// What progressctl does not use of the client library, against the daemon that is named.
//
// usage: libraryProbe IDENTIFIER DEED: the deed is one of the table at the end. Prints a line for each step,
// and "done"; the test that runs it is the user.

// As behind a header of the toolkit.
#define slots
#define forever for (;;)
#include "client/progressClient.h"

#include <climits>
#include <csignal>
#include <cstdio>
#include <functional>
#include <map>
#include <poll.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

using client = progressClient;
using reason = progressError::reason;
using namespace std::chrono_literals;

namespace
{

void say(const std::string &text)
{
    std::puts(text.c_str());
    std::fflush(stdout);
}

void expect(bool holds, const char *what)
{
    if (!holds)
        say(std::string("WRONG: ") + what);
}

void expectError(reason why, const char *what, const std::function<void()> &call)
{
    try {
        call();
        expect(false, what);
    } catch (const client::error &problem) {
        expect(problem.why() == why, problem.what());
    }
}

client::question boxNamed(const std::string &title)
{
    return {.title = title, .buttons = {client::button::yes, client::button::no}};
}

void refuse(client &window)
{
    const auto refuses = [](const char *what, const std::function<void()> &call) {
        expectError(reason::badArgument, what, call);
    };
    refuses("slot -1", [&] { window.createBar(-1, ""); });
    refuses("slot 10", [&] { window.pulse(10); });
    refuses("a key with a semicolon", [&] { window.configure({{"a;b", ""}}); });
    refuses("a box that is not open", [&] { window.answer(9); });
    refuses("no listener", [&] { window.nextEvent(0ms); });
    refuses("a name that is not learned", [] { client::startDaemon("x", {.learnName = "y"}); });
    refuses("a base port of 1", [] { client::startDaemon("x", {.basePort = 1}); });
    client kept = std::move(window);
    // NOLINTBEGIN(bugprone-use-after-move, clang-analyzer-cplusplus.Move): that is the case.
    refuses("moved from", [&] { window.activate(); });
    refuses("moved from, without a call to the daemon", [&] { static_cast<void>(window.fd()); });
    // NOLINTEND(bugprone-use-after-move, clang-analyzer-cplusplus.Move)
    window = std::move(kept);
    auto box = boxNamed("");
    box.preset = client::button::ok;
    refuses("default that is no button", [&] { window.ask(box); });
    box.buttons.assign(11, client::button::ok);
    refuses("eleven buttons", [&] { window.ask(box); });
}

/// Answered in another order than they are asked, one of them by nobody.
void ask(client &window)
{
    expectError(reason::timedOut, "nobody answers", [&] { window.ask(boxNamed("nobody"), 10ms); });
    const int first = window.openBox(boxNamed("first"));
    const int second = window.openBox(boxNamed("second"));
    expect(!window.answer(first, 10ms), "an early answer");
    say("asked");
    const auto later = window.answer(second, 60s);
    expect(later == client::button::no, "the second answer");
    say("second is answered");
    expect(window.answer(first, 60s) == client::button::yes, "the first answer");
    expectError(reason::badArgument, "an answer twice", [&] { window.answer(first); });
}

void hear(client &window)
{
    window.listen();
    constexpr int count = 500;
    for (int i = 0; i < count; ++i)
        window.activate();
    expect(window.claim() == 1, "the next slot"); // takes events in, too
    int heard = 0;
    pollfd readable{window.fd(), POLLIN, 0};
    do
        heard += static_cast<int>(window.handleEvents([](const auto &) {}));
    while (heard < count && ::poll(&readable, 1, 60'000) == 1);
    expect(heard == count, "all events");
    window.createBar(1, "x");
    window.updateBar(1, 40);
    std::optional<client::event> each;
    do
        each = window.nextEvent(60s);
    while (each && (each->what != client::event::kind::totalProgress || each->percent != 40));
    expect(each.has_value(), "the percent of an event");
}

/// With a daemon: boxes, claims, events.
void useAll(const char *name)
{
    client window(name, 10s);
    expect(window.claim() == 0, "the first slot");
    refuse(window);
    ask(window);
    hear(window);
    window.finish();
    expectError(reason::gone, "use after the end", [&] { window.activate(); });
}

/// What data may hold, sent in one piece.
void carry(const char *name)
{
    client window(name, client::milliseconds::max());
    expect(window.claim() == 0, "an answer within the longest time");
    progressBatch batch;
    batch.createBar(0, std::string_view("a</progress>\0;b", 15));
    batch.updateBar(0, 101);
    batch.updateBar(0, INT_MIN);
    batch.updateBar(0, client::givenUp);
    batch.setAmount(-1);
    batch.setAmount(INT64_MAX);
    batch.configure({{"windowTitle", "a;</configuration>"}});
    batch.createText(1, std::string(70'000, 'x') + "\u00e9");
    window.send(batch);
    expect(batch.isEmpty(), "an empty batch");
    expectError(reason::timedOut, "nobody answers", [&] { window.ask(boxNamed("[#]</msgbox>"), 10ms); });
}

template <typename Act> double secondsOf(const Act &act)
{
    const auto start = std::chrono::steady_clock::now();
    act();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// A daemon that does not get on for a while.
void wait(const char *name)
{
    client window(name, 1s);
    const auto claim = [&] { expectError(reason::timedOut, "a claim", [&] { window.claim(); }); };
    expect(secondsOf(claim) > 0.9, "the time that was given");
    const double again = secondsOf([&] {
        for (int i = 0; i < 20; ++i)
            claim();
        expectError(reason::timedOut, "a look", [&] { window.checkAlive(); });
    });
    expect(again < 10, "later calls do not wait"); // each would a second
    say("asked");
    std::getchar();
    expect(window.claim() == 0 && window.claim() == 1, "each claim is asked for once");
    client patient(name, client::unlimited);
    expect(patient.claim() == 0, "an answer, without a limit");
}

/// A daemon that reads nothing.
void breakOff(const char *name)
{
    client window(name, 300ms);
    expectError(reason::timedOut, "half a message", [&] { window.send(std::string(8 << 20, 'x')); });
    expectError(reason::gone, "the next one", [&] { window.activate(); });
    expectError(reason::gone, "and the next", [&] { window.claim(); });
}

/// The connection is the parent's.
void separate(const char *name)
{
    client window(name, 10s);
    const pid_t child = ::fork();
    if (child == 0) {
        window.finish();
        client closed = std::move(window);
        std::_Exit(0);
    }
    ::waitpid(child, nullptr, 0);
    expect(window.claim() == 0, "the parent's connection");
}

/// Without a daemon, and with one that hangs up.
void goOn(const char *name)
{
    for (const auto &options : {client::daemonOptions{.program = "/nowhere"}, client::daemonOptions{}}) {
        const bool connects = options.program.empty();
        client window = connects ? client::orNothing(name) : client::orNothing("nobody", options);
        expect(connects == window.whyGone().empty(), "why there is no daemon");
        window.listen();
        expect(window.claim() == -1 && window.fd() == -1, "no slot");
        window.createBar(0, "x");
        expect(window.ask(boxNamed("x")) == client::button::none, "no answer");
        expect(!window.nextEvent(60s) && window.handleEvents([](const auto &) {}) == 0, "no event");
        expect(!window.whyGone().empty(), "why it is gone");
        window.finish();
    }
}

/// In front of a daemon that takes nobody in, under a timer's signals.
void queue(const char *name)
{
    struct sigaction ticked = {};
    ticked.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &ticked, nullptr);
    const itimerval often{{0, 20'000}, {0, 20'000}};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    expectError(reason::timedOut, "somebody takes it in", [name] { client(name, 200ms); });
}

const std::map<std::string, void (*)(const char *)> deeds{
    {"useAll", useAll},     {"carry", carry}, {"wait", wait},   {"breakOff", breakOff},
    {"separate", separate}, {"goOn", goOn},   {"queue", queue},
};

} // namespace

int main(int, char **arguments)
{
    try {
        deeds.at(arguments[2])(arguments[1]);
        say("done");
    } catch (const client::error &problem) {
        say(std::string("WRONG: ") + problem.what());
    }
}
