#include "progressctl/writer.h"

#include "client/system.h"
#include "progressctl/common.h"
#include "progressctl/exitStatus.h"

#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

struct folderCloser {
    void operator()(DIR *folder) const { ::closedir(folder); }
};
using openFolder = std::unique_ptr<DIR, folderCloser>;

[[noreturn]] void runCommand(const std::vector<std::string> &command, int output, bool tellsFailure)
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
    if (tellsFailure)
        complain(systemText("cannot run " + command[0]));
    ::_exit(status);
}

bool isOpenForWriting(const std::string &process, const char *fd)
{
    const std::string path = "/proc/" + process + "/fdinfo/" + fd;
    const std::unique_ptr<FILE, int (*)(FILE *)> file(std::fopen(path.c_str(), "re"), std::fclose);
    unsigned flags = 0;
    return file && std::fscanf(file.get(), "pos: %*d flags: %o", &flags) == 1 &&
           (flags & O_ACCMODE) != O_RDONLY;
}

bool writesTo(const std::string &process, const struct stat &pipe)
{
    const std::string path = "/proc/" + process + "/fd";
    const openFolder folder(::opendir(path.c_str()));
    if (!folder)
        return false;
    while (const dirent *entry = ::readdir(folder.get())) {
        struct stat about = {};
        if (::stat((path + '/' + entry->d_name).c_str(), &about) == 0 && about.st_dev == pipe.st_dev &&
            about.st_ino == pipe.st_ino && isOpenForWriting(process, entry->d_name))
            return true;
    }
    return false;
}

} // namespace

writer::writer(const std::vector<std::string> &command, bool tellsFailure)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw failure(statusInternal, systemText("no pipe"));
    m_process = ::fork();
    if (m_process == 0)
        runCommand(command, ends[1], tellsFailure);
    ::close(ends[1]);
    m_output = descriptor(ends[0]);
    ::fcntl(output(), F_SETFL, O_NONBLOCK);
    if (m_process < 0)
        throw failure(statusInternal, systemText("cannot make a process"));
    m_handle = std::make_unique<processHandle>(m_process);
}

std::string writer::outputToEnd()
{
    std::string all;
    char buffer[4096];
    for (;;) {
        const ssize_t got = ::read(output(), buffer, sizeof buffer);
        if (got == 0 || (got < 0 && errno != EAGAIN && errno != EINTR))
            return all;
        if (got > 0)
            all.append(buffer, static_cast<std::size_t>(got));
        else
            waitFor(output(), POLLIN, deadline(std::chrono::milliseconds(-1)));
    }
}

int writer::exitStatus()
{
    int status = 0;
    while (::waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

bool endWriters(int inputFd)
{
    struct stat pipe = {};
    if (::fstat(inputFd, &pipe) != 0 || !S_ISFIFO(pipe.st_mode))
        return false;
    const openFolder processes(::opendir("/proc"));
    while (const dirent *entry = processes ? ::readdir(processes.get()) : nullptr) {
        if (!std::isdigit(static_cast<unsigned char>(entry->d_name[0])))
            continue;
        const auto process = static_cast<pid_t>(std::atol(entry->d_name));
        if (process == ::getpid())
            continue;
        // Held first: the number cannot go to another process between the look and the signal.
        const processHandle handle(process);
        if (writesTo(entry->d_name, pipe))
            handle.signal(SIGTERM);
    }
    return true;
}
