#pragma once

#include <vector>

/// Appends one record to the diagnostic log: the local date and time, the description, the result and,
/// when `data` is given, its first `dataLen` values.
///
/// The log is "/var/instrument/VKT-progressbar.log", or "/tmp/VKT-progressbar.log" while the first cannot
/// be used: each must be a regular file, under this one name, of this user (the first may be root's). It is
/// opened and closed for every record, so it survives a crash and may be removed at any time. A description
/// that starts with "#" is written without it and followed by an empty line. A record that cannot be written
/// is lost; nothing is reported.
void dump(const char *description, int result, int dataLen = 0, const int *data = nullptr);

/// From now on the log is `path` alone, or nothing is logged when it is null. The text is kept, not owned.
void setLog(const char *path);

/// The places of the log in which something stands that is no log of this user's; a file in the first place
/// that may not be written is none of them.
std::vector<const char *> unusableLogs();

/// Makes the records' times last until functions that are registered with atexit() after this call have run.
/// Without it, the toolkit may have taken away before them what it writes dates with.
void prepareDump();

/// The number under which an object's identity (its address, cut to an int) stands in the log.
int dumpIdentity(const void *object);
