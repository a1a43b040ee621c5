#pragma once

#include <optional>
#include <string>

/// Where a daemon of this user is found: the folder of the sockets, and the lock file with the ports.
namespace wire
{

/// The folder of this session: what XDG_RUNTIME_DIR names, if that is a folder of this user's; else
/// /run/user/UID, if that is one and closed to others, as after su and in cron. Empty where there is none.
std::string runtimeFolder();

/// The folder of this user's sockets: "progressd" in the session's folder, or "/tmp/progressd-UID".
std::string socketFolder();

/// IDENTIFIER.sock in it; none for an identifier that is no file name (empty, or with a "/" or a zero
/// byte in it).
std::optional<std::string> socketPath(const std::string &folder, const std::string &identifier);

/// Whether a path is short enough for a socket's address.
bool fitsSocket(const std::string &path);

/// Why no socket in this folder can be trusted: it is a link, belongs to somebody else or is open to others.
/// Empty where it is fine, or missing.
std::string faultOfSocketFolder(const std::string &folder);

/// Makes the folder, closed to others, where it is missing. Gives what is wrong with it all the same.
std::string makeSocketFolder(const std::string &folder);

/// The folder of the learned runs of this user's private daemons: "progressd" in what XDG_STATE_HOME names,
/// else in ~/.local/state.
std::string learnedFolder();

/// The file in it of those that are learned under `name`: a safe and short one for whatever name. All but
/// letters, digits, "-", ".", "_" and "~" is written as "%" and two hexadecimal digits; of a long name only
/// the beginning stands in front of a digest.
std::string learnedPath(const std::string &name);

/// The numbers in a lock file; 0 for a server that does not listen.
struct portNumbers {
    int command = 0;
    int event = 0;
};

std::string lockFilePath(const std::string &identifier);

/// Two lines, a decimal number each.
std::string lockFileText(const portNumbers &ports);
/// None for a text that is no such one, or is still being written.
std::optional<portNumbers> portsFromText(const std::string &text);

} // namespace wire
