#pragma once

struct commandLine;

/// Runs the daemon, from its servers' start to the orderly end; the application object exists already.
/// Returns the exit status of the process: 0 after an orderly end, `cannotServe(line)` when it could not
/// start, 1 when somebody else answers in a private daemon's place.
int serve(const commandLine &line);

/// The exit status of a daemon that cannot start.
int cannotServe(const commandLine &line);
