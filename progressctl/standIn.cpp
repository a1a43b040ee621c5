#include "progressctl/commandLine.h"

#include "client/system.h"
#include "progressctl/texts.h"

#include <algorithm>
#include <cstdlib>
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

} // namespace

std::vector<std::string> wordsOfStandIn(int argc, char **argv)
{
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    const std::string name = argc > 0 ? baseName(argv[0]) : std::string();
    if (std::ranges::find(otherPrograms, name) == std::end(otherPrograms))
        return words;
    if (std::ranges::find_first_of(words, progressOptions) == words.end())
        handOn(name, argv);
    // What stands behind a "--" there is no command.
    std::erase(words, "--");
    words.insert(words.begin(), "pipe");
    return words;
}
