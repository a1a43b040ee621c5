#include "progressctl/commandLine.h"

#include "client/waiting.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr std::string_view otherPrograms[] = {"zenity", "yad", "dialog", "whiptail"};
/// Options by which they are asked for a progress window.
constexpr std::string_view progressOptions[] = {"--progress", "--multi-progress", "--gauge"};

bool isThisProgram(const struct stat &file)
{
    struct stat self = {};
    return ::stat("/proc/self/exe", &self) == 0 && self.st_dev == file.st_dev && self.st_ino == file.st_ino;
}

/// The first one in PATH that is not this program under another name; empty if there is none.
std::string nextInPath(const std::string &name)
{
    const char *given = std::getenv("PATH");
    std::istringstream folders(given ? given : "/usr/local/bin:/usr/bin:/bin");
    for (std::string folder; std::getline(folders, folder, ':');) {
        const std::string path = (folder.empty() ? "." : folder) + '/' + name;
        struct stat about = {};
        if (::stat(path.c_str(), &about) == 0 && S_ISREG(about.st_mode) &&
            ::access(path.c_str(), X_OK) == 0 && !isThisProgram(about))
            return path;
    }
    return {};
}

[[noreturn]] void handOn(const std::string &name, char **argv)
{
    const std::string path = nextInPath(name);
    if (path.empty())
        throw failure(127, "this is no progress window, and there is no other " + name + " in PATH");
    ::execv(path.c_str(), argv);
    throw failure(126, systemText("cannot run " + path));
}

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

std::vector<std::string> wordsOfStandIn(int argc, char **argv)
{
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    const std::string name = std::filesystem::path(argc > 0 ? argv[0] : "").filename();
    if (std::ranges::find(otherPrograms, name) == std::end(otherPrograms))
        return words;
    if (std::ranges::find_first_of(words, progressOptions) == words.end())
        handOn(name, argv);
    // What stands behind a "--" there is no command.
    std::erase(words, "--");
    words.insert(words.begin(), "pipe");
    return words;
}

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
