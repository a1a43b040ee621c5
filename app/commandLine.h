#pragma once

/// What the daemon was started with.
struct commandLine {
    /// Names the lock file and the statistics file; null when it is missing. Not owned.
    const char *identifier = nullptr;
    /// Base port of the two servers; without one (below 0) clients can end the daemon.
    int basePort = -2;
};

/// Reads the arguments: the identifier and, read only when there are exactly two, the base port, a decimal
/// number of which an unreadable one counts as 0.
commandLine parseCommandLine(int argc, char **argv);

/// The port to ask for the event server: the next one, but with a base port that stands for any free port
/// (0 and 1), any free port too.
int eventPort(int basePort);
