#include "progressctl/writer.h"

#include "progressctl/common.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

[[noreturn]] void runCommand(const std::vector<std::string> &command, int output)
{
    ::dup2(output, STDOUT_FILENO);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    std::vector<char *> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string &each : command)
        arguments.push_back(const_cast<char *>(each.c_str()));
    arguments.push_back(nullptr);
    ::execvp(arguments[0], arguments.data());
    const int status = errno == ENOENT ? 127 : 126;
    complain(systemText("cannot run " + command[0]));
    ::_exit(status);
}

void endTree(pid_t process)
{
    const std::string number = std::to_string(process);
    std::ifstream list("/proc/" + number + "/task/" + number + "/children");
    const std::vector<pid_t> children{std::istream_iterator<pid_t>(list), {}};
    // Before them, or it would tell how they have ended.
    ::kill(process, SIGTERM);
    for (const pid_t child : children)
        endTree(child);
}

} // namespace

writer::writer(const std::vector<std::string> &command)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw failure(statusInternal, systemText("no pipe"));
    m_process = ::fork();
    if (m_process == 0)
        runCommand(command, ends[1]);
    ::close(ends[1]);
    m_output = descriptor(ends[0]);
    ::fcntl(output(), F_SETFL, O_NONBLOCK);
    if (m_process < 0)
        throw failure(statusInternal, systemText("cannot make a process"));
    m_handle = processHandle(m_process);
}

/// Not waited for yet, so its number still means it.
void writer::endAll() const
{
    endTree(m_process);
}

int writer::exitStatus()
{
    int status = 0;
    while (::waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}
