#include "app/commandLine.h"

#include <cstdlib>
#include <string_view>

namespace
{

using namespace std::literals;

commandLine parsePrivate(int argc, char **argv)
{
    commandLine line;
    line.isPrivate = true;
    const bool hasName = argc == 5 && argv[3] == "--learn"sv;
    if (argc != 3 && !hasName)
        return line;
    line.identifier = argv[2];
    const char *name = hasName ? argv[4] : line.identifier;
    line.statisticsName = hasName && *name == '\0' ? nullptr : name;
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

int eventPort(int basePort)
{
    if (basePort == 0 || basePort == 1)
        return basePort;
    return static_cast<int>(static_cast<unsigned>(basePort) + 1U);
}
