// The words of the protocol.
//
// printWords               a line each: its kind, the word, what belongs to it
// printWords --dictionary  as the fuzzers want them
// printWords TEMPLATE      this file, with all of a kind in the place of @settings@, @buttons@, @icons@

#include "wire/tags.h"
#include "wire/words.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

namespace
{

bool asDictionary = false;

/// The suffix stands behind the word on the wire.
void print(const char *kind, std::string_view word, const std::string &more = {}, const char *suffix = "")
{
    const std::string text(word);
    if (asDictionary)
        std::printf("\"%s%s\"\n", text.c_str(), suffix);
    else
        std::printf("%s %s%s%s\n", kind, text.c_str(), more.empty() ? "" : " ", more.c_str());
}

void printTags()
{
    for (const auto &each : wire::allTags) {
        print("message", each.opening, std::string(each.closing));
        if (asDictionary && !each.closing.empty())
            print("", each.closing);
    }
    for (const auto &each : wire::allReplies)
        print("reply", each.opening, std::string(each.closing));
    print("separator", wire::fieldSeparator);
}

void printSettings()
{
    constexpr const char *kinds[] = {"text", "numbers", "fonts", "colours", "words"};
    for (const auto &each : wire::settingForms) {
        std::string more = kinds[static_cast<std::size_t>(each.value)];
        for (const std::string_view word : each.words) {
            if (!word.empty())
                more.append(" ").append(word);
        }
        print("setting", each.key, more, "=");
        for (const std::string_view word : each.words) {
            if (asDictionary && !word.empty())
                print("", word);
        }
    }
}

void printButtons()
{
    for (const auto &each : wire::buttons) {
        const std::string number = std::to_string(each.number);
        if (asDictionary)
            print("", number);
        else
            print("button", each.name, number + (each.accepts ? " accepts" : " rejects"));
    }
    for (std::size_t i = 0; i < wire::icons.size() && !asDictionary; ++i)
        print("icon", wire::icons[i], std::to_string(i));
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
    std::fputs(text.c_str(), stdout);
}

void printAll()
{
    constexpr const char *arguments[] = {"none", "slot", "slot value", "slot text", "amount"};
    printTags();
    for (const auto &each : wire::progressForms)
        print("command", each.keyword, arguments[static_cast<std::size_t>(each.arguments)]);
    printSettings();
    for (const std::string_view each : wire::eventNames)
        print("event", each);
    printButtons();
}

} // namespace

int main(int argc, char **argv)
{
    asDictionary = argc > 1 && std::strcmp(argv[1], "--dictionary") == 0;
    if (argc > 1 && !asDictionary)
        printFilled(argv[1]);
    else
        printAll();
    return std::fflush(stdout) == 0 ? 0 : 1;
}
