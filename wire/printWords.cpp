// The words of the protocol.
//
// printWords           a line each: its kind, the word, what belongs to it
// printWords TEMPLATE  this file, with all of a kind in the place of @settings@, @buttons@, @icons@

#include "wire/tags.h"
#include "wire/words.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <iostream>
#include <iterator>
#include <string>
#include <utility>

namespace
{

/// Empty words are left out.
void print(std::initializer_list<std::string_view> words)
{
    const char *gap = "";
    for (const std::string_view word : words) {
        if (!word.empty())
            std::cout << std::exchange(gap, " ") << word;
    }
    std::cout << '\n';
}

void printAll()
{
    constexpr const char *arguments[] = {"none", "slot", "slot value", "slot text", "amount"};
    constexpr const char *kinds[] = {"text", "numbers", "fonts", "colours", "words"};
    for (const auto &each : wire::allTags)
        print({"message", each.opening, each.closing});
    for (const auto &each : wire::allReplies)
        print({"reply", each.opening, each.closing});
    print({"separator", wire::fieldSeparator});
    for (const auto &each : wire::progressForms)
        print({"command", each.keyword, arguments[static_cast<std::size_t>(each.arguments)]});
    for (const auto &[key, value, words] : wire::settingForms)
        print({"setting", std::string(key) + '=', kinds[static_cast<std::size_t>(value)], words[0], words[1],
               words[2]});
    for (const std::string_view each : wire::eventNames)
        print({"event", each});
    for (const auto &[name, number, accepts] : wire::buttons)
        print({"button", name, std::to_string(number), accepts ? "accepts" : "rejects"});
    for (std::size_t i = 0; i < wire::icons.size(); ++i)
        print({"icon", wire::icons[i], std::to_string(i)});
}

std::string listed(std::string_view item)
{
    return std::string(item) + ' ';
}

/// A setting that takes one of a few words is there with each of them.
std::string listOfSettings()
{
    std::string list;
    for (const auto &[key, value, words] : wire::settingForms) {
        for (std::size_t i = 0; i == 0 || (i < words.size() && !words[i].empty()); ++i)
            list += listed(std::string(key).append("=").append(words[i]));
    }
    return list;
}

void printFilled(const char *path)
{
    std::string buttons;
    for (const auto &each : wire::buttons)
        buttons += listed(each.name);
    std::string icons;
    for (const std::string_view each : wire::icons)
        icons += listed(each);
    std::ifstream file(path);
    if (!file) {
        std::perror(path);
        std::exit(EXIT_FAILURE);
    }
    std::string text(std::istreambuf_iterator<char>(file), {});
    for (const auto &[mark, list] :
         {std::pair{"@settings@", listOfSettings()}, {"@buttons@", buttons}, {"@icons@", icons}}) {
        for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos;)
            text.replace(at, std::strlen(mark), list, 0, list.size() - 1);
    }
    std::cout << text;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc > 1)
        printFilled(argv[1]);
    else
        printAll();
    return std::cout.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
}
