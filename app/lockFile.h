#pragma once

/// The lock file: two lines with the ports that the servers listen on. It is there while the daemon serves.
/// Its name holds the identifier's bytes as they are, whatever the encoding.

/// Keeps the path for `identifier`; false when it does not fit.
bool setLockFile(const char *identifier);
/// The path; empty before it was set.
const char *lockFilePath();
/// Writes the ports, 0 for a server that does not listen, into a new file in the place of the one that may be
/// there. A file that cannot be made is no failure: the daemon runs without it. False only when something
/// else stays in its place, by which clients would be misled: no regular file, or one of another user's that
/// cannot be removed.
bool writeLockFile(int commandPort, int eventPort);
void removeLockFile();
