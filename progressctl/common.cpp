#include "progressctl/common.h"

#include "client/waiting.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>

void actOnce(const commonOptions &common, const std::function<void(progressClient &)> &act)
{
    progressClient client(common.identifier, common.limit());
    act(client);
    client.finish();
}

void complain(const std::string &text)
{
    std::fprintf(stderr, "progressctl: %s\n", text.c_str());
}

std::string environment(const char *name)
{
    const char *value = std::getenv(name);
    return value ? value : "";
}

std::string readTextFile(const std::string &path)
{
    constexpr std::size_t longestFile = 64 * 1024 * 1024;
    std::ifstream file(path, std::ios::binary);
    std::string content;
    char buffer[16 * 1024];
    while (file.read(buffer, sizeof buffer) || file.gcount() > 0) {
        content.append(buffer, static_cast<std::size_t>(file.gcount()));
        if (content.size() > longestFile)
            throw failure(statusFile, path + " is too long");
    }
    if (!file.eof())
        throw failure(statusFile, systemText("cannot read " + path));
    return content;
}
