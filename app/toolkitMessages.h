#pragma once

/// What the toolkit has to say, which clients can make it do with any text (a font's name, a file's).

/// While the daemon starts it goes to standard error. The toolkit aborts where it cannot go on, above all
/// without a display: that ends the process with `failureStatus`, without a core file.
void reportToolkitMessages(int failureStatus);
/// From now on it goes to the log, some lines a second and the rest counted, and nothing goes to standard
/// error.
void logToolkitMessages();
