#include "server/localFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace
{

constexpr char variable[] = "XDG_RUNTIME_DIR";

bool namesFolder(const char *runtime)
{
    struct stat found = {};
    return runtime && runtime[0] == '/' && stat(runtime, &found) == 0 && S_ISDIR(found.st_mode) &&
           found.st_uid == geteuid();
}

std::string findFolder()
{
    const char *runtime = std::getenv(variable);
    return namesFolder(runtime) ? std::string(runtime) + "/progressd"
                                : "/tmp/progressd-" + std::to_string(geteuid());
}

} // namespace

const std::string &localFolder()
{
    static const std::string folder = findFolder();
    return folder;
}

void settleLocalFolder()
{
    const std::string &folder = localFolder();
    if (!namesFolder(std::getenv(variable)))
        setenv(variable, folder.c_str(), 1);
}

bool prepareLocalFolder(const std::string &folder, std::string &error)
{
    constexpr mode_t ownOnly = S_IRWXU;
    // The mode is set apart from the making, which the process's mask has its say in.
    if (mkdir(folder.c_str(), ownOnly) == 0)
        chmod(folder.c_str(), ownOnly);
    else if (errno != EEXIST) {
        error = folder + ": " + std::strerror(errno);
        return false;
    }
    struct stat found = {};
    if (lstat(folder.c_str(), &found) != 0)
        error = folder + ": " + std::strerror(errno);
    else if (!S_ISDIR(found.st_mode))
        error = folder + " is no folder";
    else if (found.st_uid != geteuid())
        error = folder + " belongs to somebody else";
    else if ((found.st_mode & (S_IRWXG | S_IRWXO)) != 0)
        error = folder + " is open to others";
    return error.empty();
}
