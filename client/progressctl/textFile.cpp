#include "client/progressctl/textFile.h"

#include "client/progressctl/common.h"
#include "client/progressctl/exitStatus.h"
#include "client/waiting.h"

#include <cstdio>
#include <memory>

namespace
{

constexpr std::size_t longestFile = 64 * 1024 * 1024;

struct fileCloser {
    void operator()(FILE *file) const { std::fclose(file); }
};
using openFile = std::unique_ptr<FILE, fileCloser>;

[[noreturn]] void throwFailure(const std::string &what)
{
    throw failure(statusFile, systemText(what));
}

} // namespace

std::string readTextFile(const std::string &path)
{
    const openFile file(std::fopen(path.c_str(), "re"));
    if (!file)
        throwFailure("cannot read " + path);
    std::string content;
    char buffer[16 * 1024];
    while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, file.get())) {
        content.append(buffer, got);
        if (content.size() > longestFile)
            throw failure(statusFile, path + " is too long");
    }
    if (std::ferror(file.get()))
        throwFailure("cannot read " + path);
    return content;
}

void writeTextFile(const std::string &path, const std::string &content)
{
    openFile file(std::fopen(path.c_str(), "we"));
    if (!file)
        throwFailure("cannot write " + path);
    const bool written = std::fwrite(content.data(), 1, content.size(), file.get()) == content.size();
    if (!written || std::fclose(file.release()) != 0)
        throwFailure("cannot write " + path);
}
