#include "client/listeningSocket.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace
{

struct fileCloser {
    void operator()(FILE *file) const { std::fclose(file); }
};
struct folderCloser {
    void operator()(DIR *folder) const { ::closedir(folder); }
};
using openFolder = std::unique_ptr<DIR, folderCloser>;

bool holds(const std::string &process, const std::string &wantedLink)
{
    const std::string path = "/proc/" + process + "/fd";
    const openFolder folder(::opendir(path.c_str()));
    if (!folder)
        return false;
    while (const dirent *entry = ::readdir(folder.get())) {
        char target[64];
        const std::string link = path + '/' + entry->d_name;
        const ssize_t size = ::readlink(link.c_str(), target, sizeof target);
        if (size > 0 && std::string_view(target, static_cast<std::size_t>(size)) == wantedLink)
            return true;
    }
    return false;
}

} // namespace

std::optional<listeningSocket> findListener(int port)
{
    constexpr unsigned listening = 0x0A;
    const std::unique_ptr<FILE, fileCloser> table(std::fopen("/proc/net/tcp", "re"));
    if (!table || port <= 0)
        return std::nullopt;
    char line[512];
    while (std::fgets(line, sizeof line, table.get())) {
        unsigned localPort = 0;
        unsigned state = 0;
        unsigned owner = 0;
        unsigned long inode = 0;
        // Number, local and remote address, state, queues, timer, retransmits, owner, time-out, inode.
        const int fields = std::sscanf(line, " %*u: %*x:%x %*x:%*x %x %*x:%*x %*x:%*x %*x %u %*u %lu",
                                       &localPort, &state, &owner, &inode);
        if (fields == 4 && state == listening && localPort == static_cast<unsigned>(port))
            return listeningSocket{owner, inode};
    }
    return std::nullopt;
}

pid_t processOf(const listeningSocket &socket)
{
    const std::string wantedLink = "socket:[" + std::to_string(socket.inode) + ']';
    const openFolder processes(::opendir("/proc"));
    if (!processes)
        return 0;
    while (const dirent *entry = ::readdir(processes.get())) {
        if (std::isdigit(static_cast<unsigned char>(entry->d_name[0])) && holds(entry->d_name, wantedLink))
            return static_cast<pid_t>(std::atol(entry->d_name));
    }
    return 0;
}
