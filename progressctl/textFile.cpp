#include "progressctl/textFile.h"

#include "client/system.h"
#include "progressctl/common.h"
#include "progressctl/exitStatus.h"

#include <cerrno>
#include <fstream>

namespace
{

constexpr std::size_t longestFile = 64 * 1024 * 1024;

} // namespace

std::string readTextFile(const std::string &path)
{
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

void writeTextFile(const std::string &path, const std::string &content)
{
    std::ofstream file(path, std::ios::binary);
    file << content;
    file.close();
    if (!file)
        throw failure(statusFile, systemText("cannot write " + path));
}
