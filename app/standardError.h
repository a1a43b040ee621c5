#pragma once

#include <string_view>

/// Standard error belongs to whoever started the daemon. It is for what goes wrong at the start, and may be a
/// pipe that nobody reads, or that is closed: neither may stop or end the daemon.

/// To be called first: opens whichever standard streams are closed, lest another file takes their number, and
/// makes writing to standard error harmless.
void secureStandardStreams();
/// Writes a line that begins with the program's name; one that would have to wait is lost.
void complain(std::string_view text);

// What the toolkit has to say, which clients can make it do with any text (a font's name, a file's).

/// While the daemon starts it goes to standard error. The toolkit aborts where it cannot go on, above all
/// without a display: that ends the process with `failureStatus`, without a core file.
void reportToolkitMessages(int failureStatus);
/// From now on it goes to the log, some lines a second and the rest counted, and nothing reaches standard
/// error, whoever writes to it.
void logToolkitMessages();
