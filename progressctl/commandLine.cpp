#include "progressctl/commandLine.h"

#include <algorithm>
#include <cstdlib>

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

givenWords wordsFrom(const std::vector<std::string> &all)
{
    const auto mark = std::find(all.begin(), all.end(), "--");
    givenWords given;
    given.verb = verbOf(all);
    for (auto each = all.begin(); each != mark; ++each) {
        const bool isEmpty = each->size() > 3 && each->starts_with("--") && each->ends_with('=');
        given.words.push_back(isEmpty ? each->substr(0, each->size() - 1) : *each);
        if (isEmpty)
            given.words.emplace_back();
    }
    if (mark != all.end() && given.verb == "pipe")
        given.command.assign(mark + 1, all.end());
    else
        given.words.insert(given.words.end(), mark, all.end());
    return given;
}

CLI::Validator valueThat(const std::function<bool(const std::string &)> &isFine, const std::string &fault)
{
    const auto check = [=](const std::string &text) {
        return isFine(text) ? std::string() : '"' + text + "\" " + fault;
    };
    return {check, "", fault};
}

CLI::Validator secondsWithin(double least, double most)
{
    const auto isFine = [=](const std::string &text) {
        char *end = nullptr;
        const double number = std::strtod(text.c_str(), &end);
        // A number that is none is within nothing.
        return !text.empty() && *end == '\0' && number >= least && number <= most;
    };
    return valueThat(isFine, "is no number of seconds").description("SECONDS");
}
