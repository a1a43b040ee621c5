#include "progressctl/iconFile.h"

#include "progressctl/common.h"

#include <cstdlib>
#include <unistd.h>

namespace
{

/// The folders of the environment's list of data folders, with ":" in between.
std::string dataFolders()
{
    const char *given = std::getenv("XDG_DATA_DIRS");
    return given && *given ? given : "/usr/local/share:/usr/share";
}

bool isThere(const std::string &path)
{
    return ::access(path.c_str(), R_OK) == 0;
}

} // namespace

std::string iconFile(const std::string &name)
{
    if (name.find('/') != std::string::npos)
        return name;
    const std::string folders = dataFolders() + ':';
    for (std::size_t at = 0, end; (end = folders.find(':', at)) != std::string::npos; at = end + 1) {
        const std::string folder = folders.substr(at, end - at);
        for (const char *place :
             {"/icons/hicolor/48x48/apps/", "/icons/hicolor/64x64/apps/", "/icons/hicolor/128x128/apps/",
              "/icons/hicolor/256x256/apps/", "/pixmaps/"}) {
            if (const std::string path = folder + place + name + ".png"; isThere(path))
                return path;
        }
    }
    complain("--icon-name: there is no icon \"" + name + "\" here");
    return {};
}
