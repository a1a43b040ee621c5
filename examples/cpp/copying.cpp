// Shows a bar with a Cancel button, and asks at the end.
//
//   cmake -S . -B build && cmake --build build          or
//   g++ -std=c++17 copying.cpp $(pkg-config --cflags --libs progressclient)

#include <progressclient/progressclient.h>

#include <cstdio>
#include <string>
#include <unistd.h>

int main()
{
    using client = progressClient;
    try {
        // A private daemon ends with its last client: this program. What it learns is kept under "copying".
        const std::string identifier = "copying-" + std::to_string(getpid());
        client::daemonOptions options;
        options.isPrivate = true;
        options.learnName = "copying";
        client::startDaemon(identifier, options);
        client window(identifier);
        window.configure({{"windowTitle", "Copying"},
                          {"windowLayout", "fitted"},
                          {"windowTheme", "auto"},
                          {"windowModal", "off"},
                          {"estimate", "adaptive"}});
        window.listen();
        window.createBar(0, "Copying");
        window.addButton(0, "Cancel");

        bool isCancelled = false;
        for (int percent = 0; percent <= 100 && !isCancelled; percent += 2) {
            window.updateBar(0, percent);
            // The work would be done here; meanwhile events are waited for.
            using kind = client::event::kind;
            while (const auto event = window.nextEvent(client::milliseconds(20)))
                isCancelled = isCancelled || event->what == kind::clicked || event->what == kind::closed;
        }
        window.removeBar(0);
        window.removeButton(0);

        client::question box;
        box.title = "Question";
        box.text = isCancelled ? "Remove what was copied?" : "Copied. Open the folder?";
        box.buttons = {client::button::yes, client::button::no};
        box.preset = client::button::no;
        std::puts(window.ask(box) == client::button::yes ? "yes" : "no");
        return 0;
    } catch (const client::error &problem) {
        std::fprintf(stderr, "copying: %s\n", problem.what());
        return 1;
    }
}
