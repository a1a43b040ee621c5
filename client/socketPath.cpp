#include "client/socketPath.h"

#include "client/progressClient.h"
#include "client/waiting.h"

#include <cerrno>
#include <cstdlib>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace
{

using error = progressClient::error;

bool isOwnFolder(const char *path)
{
    struct stat about = {};
    return ::stat(path, &about) == 0 && S_ISDIR(about.st_mode) && about.st_uid == ::geteuid();
}

} // namespace

std::string socketFolder()
{
    const char *runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime && *runtime == '/' && isOwnFolder(runtime))
        return std::string(runtime) + "/progressd";
    return "/tmp/progressd-" + std::to_string(::geteuid());
}

std::string socketPath(const std::string &identifier)
{
    if (identifier.empty() || identifier.find('/') != std::string::npos ||
        identifier.find('\0') != std::string::npos)
        throw error(error::reason::badArgument,
                    "an identifier is a part of a file name: not empty, without \"/\"");
    std::string path = socketFolder() + '/' + identifier + ".sock";
    if (path.size() >= sizeof sockaddr_un{}.sun_path)
        throw error(error::reason::badArgument, path + " is too long for a socket");
    return path;
}

void makeSocketFolder()
{
    const std::string folder = socketFolder();
    // The mode is set apart from the making, which the process's mask has its say in.
    if (::mkdir(folder.c_str(), S_IRWXU) == 0)
        ::chmod(folder.c_str(), S_IRWXU);
    else if (errno != EEXIST)
        throw error(error::reason::system, systemText("cannot make " + folder));
}

void checkSocketFolder()
{
    const std::string folder = socketFolder();
    struct stat about = {};
    // A link would be somebody else's word for where the daemon is.
    if (::lstat(folder.c_str(), &about) != 0)
        return;
    if (!S_ISDIR(about.st_mode) || about.st_uid != ::geteuid() || (about.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        throw error(error::reason::notOurs, folder + " is no folder that belongs to this user alone");
}
