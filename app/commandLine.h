#pragma once

/// What the daemon was started with.
struct commandLine {
    /// Names the daemon: its lock file and its local socket. Null when it is missing, or when what begins as
    /// a private daemon's command line does not go on as one. Not owned.
    const char *identifier = nullptr;
    /// Base port of the two servers; without one (below 0) clients can end the daemon.
    int basePort = -2;
    /// No ports and no lock file: the local socket is the only way in.
    bool isPrivate = false;
    /// A private daemon that does not end with its last client.
    bool stays = false;
    /// Seconds without a client after which one that stays ends; 0 for never.
    int idleSeconds = 0;
    /// Names the file of learned runs: the identifier, or what a private daemon was told instead. Null when
    /// nothing is to be loaded or saved. Not owned.
    const char *statisticsName = nullptr;
    /// The log of a private daemon, null for none. Not owned.
    const char *logFile = nullptr;
};

/// Reads the arguments. With "--private" as the first, it is followed by the identifier and options:
/// "--learn" and a name, of which an empty one stands for none; "--log" and a file; "--stay", and with it
/// "--idle" and a number of seconds. Else the first is the identifier and, read only when there are exactly
/// two, the second is the base port, a decimal number of which an unreadable one counts as 0.
commandLine parseCommandLine(int argc, char **argv);
