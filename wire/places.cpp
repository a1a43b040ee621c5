#include "wire/places.h"

#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace wire
{

namespace
{

constexpr mode_t othersMode = S_IRWXG | S_IRWXO;

bool isOwnFolder(const struct stat &about)
{
    return S_ISDIR(about.st_mode) && about.st_uid == ::geteuid();
}

std::string reasonFor(const std::string &path)
{
    return path + ": " + std::strerror(errno);
}

} // namespace

std::string runtimeFolder()
{
    struct stat about = {};
    const char *named = std::getenv("XDG_RUNTIME_DIR");
    if (named && *named == '/' && ::stat(named, &about) == 0 && isOwnFolder(about))
        return named;
    std::string usual = "/run/user/" + std::to_string(::geteuid());
    const bool isClosed = ::stat(usual.c_str(), &about) == 0 && isOwnFolder(about) &&
                          (about.st_mode & (S_IRWXU | othersMode)) == S_IRWXU;
    return isClosed ? usual : std::string();
}

std::string socketFolder()
{
    const std::string runtime = runtimeFolder();
    return runtime.empty() ? "/tmp/progressd-" + std::to_string(::geteuid()) : runtime + "/progressd";
}

std::optional<std::string> socketPath(const std::string &folder, const std::string &identifier)
{
    using namespace std::string_literals;
    if (identifier.empty() || identifier.find_first_of("/\0"s) != std::string::npos)
        return std::nullopt;
    return folder + '/' + identifier + ".sock";
}

std::string learnedFolder()
{
    const char *state = std::getenv("XDG_STATE_HOME");
    if (state && *state == '/')
        return std::string(state) + "/progressd";
    const char *home = std::getenv("HOME");
    const passwd *user = home && *home == '/' ? nullptr : ::getpwuid(::geteuid());
    return std::string(user ? user->pw_dir : home ? home : "") + "/.local/state/progressd";
}

std::string learnedPath(const std::string &name)
{
    constexpr std::size_t longest = 160;
    constexpr char kept[] = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~";
    std::string file;
    std::uint64_t digest = 14695981039346656037U; // FNV-1a
    char coded[20];
    for (const char letter : name) {
        const auto byte = static_cast<unsigned char>(letter);
        digest = (digest ^ byte) * 1099511628211U;
        std::snprintf(coded, sizeof coded, letter && std::strchr(kept, letter) ? "%c" : "%%%02X", byte);
        file += coded;
    }
    if (file.size() > longest) {
        std::snprintf(coded, sizeof coded, "-%016" PRIx64, digest);
        file = file.substr(0, longest) + coded;
    }
    return learnedFolder() + '/' + file + ".txt";
}

bool fitsSocket(const std::string &path)
{
    return path.size() < sizeof(sockaddr_un::sun_path);
}

std::string faultOfSocketFolder(const std::string &folder)
{
    struct stat about = {};
    if (::lstat(folder.c_str(), &about) != 0)
        return errno == ENOENT ? std::string() : reasonFor(folder);
    if (!S_ISDIR(about.st_mode))
        return folder + " is no folder";
    if (about.st_uid != ::geteuid())
        return folder + " belongs to somebody else";
    if ((about.st_mode & othersMode) != 0)
        return folder + " is open to others";
    return {};
}

std::string makeSocketFolder(const std::string &folder)
{
    // The mode is set apart from the making, which the process's mask has its say in.
    if (::mkdir(folder.c_str(), S_IRWXU) == 0)
        ::chmod(folder.c_str(), S_IRWXU);
    else if (errno != EEXIST)
        return reasonFor(folder);
    return faultOfSocketFolder(folder);
}

std::string lockFilePath(const std::string &identifier)
{
    return "/tmp/HalvornRunning_" + identifier + ".lock";
}

std::string lockFileText(const portNumbers &ports)
{
    return std::to_string(ports.command) + '\n' + std::to_string(ports.event) + '\n';
}

std::optional<portNumbers> portsFromText(const std::string &text)
{
    portNumbers found;
    char end = '\0';
    const int fields = std::sscanf(text.c_str(), "%5d %5d%c", &found.command, &found.event, &end);
    return fields == 3 && end == '\n' ? std::optional(found) : std::nullopt;
}

} // namespace wire
