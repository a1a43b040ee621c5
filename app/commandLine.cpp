#include "app/commandLine.h"

#include <cstdlib>

commandLine parseCommandLine(int argc, char **argv)
{
    commandLine line;
    if (argc > 1)
        line.identifier = argv[1];
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
