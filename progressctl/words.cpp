#include "progressctl/words.h"

#include <algorithm>

namespace
{

bool takesValue(const std::string &word)
{
    return word == "-i" || word == "--identifier" || word == "--limit";
}

/// The first word that is neither an option in front of the verb nor an option's value.
std::string verbOf(const std::vector<std::string> &all)
{
    for (auto each = all.begin(); each != all.end(); ++each) {
        if (each->empty() || each->front() != '-')
            return *each;
        if (takesValue(*each) && ++each == all.end())
            break;
    }
    return {};
}

} // namespace

givenWords wordsFrom(int argc, char **argv)
{
    const std::vector<std::string> all(argv + 1, argv + argc);
    const auto mark = std::find(all.begin(), all.end(), "--");
    givenWords given;
    for (auto each = all.begin(); each != mark; ++each) {
        const bool isEmpty = each->size() > 3 && each->compare(0, 2, "--") == 0 && each->back() == '=';
        given.words.push_back(isEmpty ? each->substr(0, each->size() - 1) : *each);
        if (isEmpty)
            given.words.emplace_back();
    }
    if (mark != all.end() && verbOf(all) == "pipe")
        given.command.assign(mark + 1, all.end());
    else
        given.words.insert(given.words.end(), mark, all.end());
    return given;
}
