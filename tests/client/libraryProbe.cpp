// What progressctl does not use of the client library, against the daemon that is named. Prints a line for
// each step; the test that runs it is the user.

#include "client/progressClient.h"

#include <cstdio>
#include <functional>
#include <poll.h>

using client = progressClient;
using reason = progressClient::error::reason;
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
    client::question box;
    box.title = title;
    box.buttons = {client::button::yes, client::button::no};
    return box;
}

void refuse(client &window)
{
    const auto refuses = [](const char *what, const std::function<void()> &call) {
        expectError(reason::badArgument, what, call);
    };
    refuses("slot -1", [&] { window.createBar(-1, ""); });
    refuses("-2 percent", [&] { window.updateBar(0, -2); });
    refuses("zero byte", [&] { window.createText(0, std::string_view("a\0b", 3)); });
    refuses("closing tag", [&] { window.reportAssertion("</assert>"); });
    refuses("16 MiB", [&] { window.createText(0, std::string(16 << 20, 'x')); });
    refuses("[#] in a box", [&] { window.ask(boxNamed("[#]")); });
    refuses("a box that is not open", [&] { window.answer(9); });
    refuses("no listener", [&] { window.nextEvent(0ms); });
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

} // namespace

int main(int, char **arguments)
{
    try {
        client window(arguments[1], 10s);
        expect(window.claim() == 0, "the first slot");
        refuse(window);
        ask(window);
        hear(window);
        window.finish();
        expectError(reason::gone, "use after the end", [&] { window.activate(); });
        say("done");
    } catch (const client::error &problem) {
        say(std::string("WRONG: ") + problem.what());
    }
}
