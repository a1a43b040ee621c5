#pragma once

/// The lock file: two lines with the ports that the servers listen on. It is there while the daemon serves.

/// Keeps the path for `identifier`; false when it does not fit.
bool setLockFile(const char *identifier);
/// Writes the ports, 0 for a server that does not listen. A file that cannot be written is not reported:
/// the daemon runs without it.
void writeLockFile(int commandPort, int eventPort);
void removeLockFile();
