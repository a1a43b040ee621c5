#pragma once

#include "client/waiting.h"

#include <string>
#include <sys/types.h>
#include <vector>

/// A command that runs with its standard output in a pipe.
class writer
{
public:
    /// Starts it. A command that cannot be run says so on standard error and ends with 126 or 127, as in a
    /// shell.
    explicit writer(const std::vector<std::string> &command);
    /// The reading end. It does not block.
    int output() const { return m_output.get(); }
    const processHandle &handle() const { return m_handle; }
    /// Sends SIGTERM to it and to all that it has started and not left behind.
    void endAll() const;
    /// Its exit status, or 128 and the signal that has ended it. Waits for its end.
    int exitStatus();

private:
    descriptor m_output;
    pid_t m_process = 0;
    processHandle m_handle{m_process};
};
