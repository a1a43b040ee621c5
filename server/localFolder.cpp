#include "server/localFolder.h"

#include "wire/places.h"

#include <cstdlib>

const std::string &localFolder()
{
    static const std::string folder = wire::socketFolder();
    return folder;
}

void settleLocalFolder()
{
    const std::string &folder = localFolder();
    const std::string runtime = wire::runtimeFolder();
    setenv("XDG_RUNTIME_DIR", (runtime.empty() ? folder : runtime).c_str(), 1);
}
