#include "app/commandLine.h"

#include <cstdlib>
#include <string_view>

namespace
{

using namespace std::literals;

/// Seconds, of which at least one and at most what a timer holds; 0 for anything else.
int readSeconds(const char *text)
{
    constexpr long longest = 2'000'000;
    char *end = nullptr;
    const long seconds = std::strtol(text, &end, 10);
    return *end == '\0' && seconds > 0 && seconds <= longest ? static_cast<int>(seconds) : 0;
}

/// Takes an option that is followed by a value; false when it does not go.
bool takeOption(commandLine &line, std::string_view option, const char *value)
{
    if (option == "--learn"sv)
        line.statisticsName = *value == '\0' ? nullptr : value;
    else if (option == "--log"sv)
        line.logFile = value;
    else if (option == "--idle"sv)
        line.idleSeconds = readSeconds(value);
    else
        return false;
    return option != "--idle"sv || (line.stays && line.idleSeconds > 0);
}

commandLine parsePrivate(int argc, char **argv)
{
    const commandLine unusable{.isPrivate = true};
    if (argc < 3)
        return unusable;
    commandLine line{.identifier = argv[2], .isPrivate = true, .statisticsName = argv[2]};
    if (const char *log = std::getenv("PROGRESSD_LOG"); log && *log)
        line.logFile = log;
    for (int at = 3; at < argc; ++at) {
        if (argv[at] == "--stay"sv)
            line.stays = true;
        else if (at + 1 == argc || !takeOption(line, argv[at], argv[at + 1]))
            return unusable;
        else
            ++at;
    }
    return line;
}

} // namespace

commandLine parseCommandLine(int argc, char **argv)
{
    if (argc > 1 && argv[1] == "--private"sv)
        return parsePrivate(argc, argv);
    commandLine line;
    if (argc > 1)
        line.identifier = line.statisticsName = argv[1];
    if (argc == 3)
        line.basePort = static_cast<int>(std::strtol(argv[2], nullptr, 10));
    return line;
}
