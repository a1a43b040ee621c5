#include "server/localSocket.h"

#include "wire/places.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/file.h>
#include <thread>
#include <utility>

namespace
{

using namespace std::chrono_literals;

constexpr char socketSuffix[] = ".sock";
constexpr char lockSuffix[] = ".lock";

/// For so long a daemon that starts or ends may hold the lock without answering.
constexpr auto patience = 2s;
constexpr auto step = 10ms;
constexpr int backlog = 64;

/// Where the sockets of this user's daemons lie. Found out at the first call.
const std::string &localFolder()
{
    static const std::string folder = wire::socketFolder();
    return folder;
}

wire::descriptor newSocket()
{
    return wire::descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

bool isAt(const std::string &path, const struct stat &file)
{
    struct stat found = {};
    return lstat(path.c_str(), &found) == 0 && found.st_dev == file.st_dev && found.st_ino == file.st_ino;
}

} // namespace

void settleLocalFolder()
{
    const std::string &folder = localFolder();
    const std::string runtime = wire::runtimeFolder();
    setenv("XDG_RUNTIME_DIR", (runtime.empty() ? folder : runtime).c_str(), 1);
}

localSocket::localSocket(const std::string &folder, const std::string &name)
    : m_path(folder + '/' + name + socketSuffix), m_lockPath(folder + '/' + name + lockSuffix)
{
}

localSocket::outcome localSocket::open(const char *identifier)
{
    const std::string &folder = localFolder();
    const auto path = wire::socketPath(folder, identifier);
    if (!path)
        return fail("the identifier is no file name");
    m_path = *path;
    m_lockPath = folder + '/' + identifier + lockSuffix;
    if (!wire::fitsSocket(m_path))
        return fail(m_path + " is too long for a socket");
    if (const std::string fault = wire::makeSocketFolder(folder); !fault.empty())
        return fail(fault);
    const outcome result = take();
    if (result == outcome::listening)
        sweep(folder);
    else
        m_lock.close();
    return result;
}

localSocket::outcome localSocket::take()
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    pid_t holder = 0;
    int sightings = 0;
    while (!lock()) {
        if (!m_lock)
            return fail(m_lockPath + ": " + std::strerror(errno));
        // At the second sighting the holder, which neither starts nor ends, did not answer; at the third it
        // is certain that it still lived then.
        const pid_t seen = servingHolder();
        sightings = seen != 0 && seen == holder ? sightings + 1 : 1;
        holder = seen;
        if (holder != 0 && sightings == 3)
            return fail("process " + std::to_string(holder) + " has the place of " + m_path +
                        ", and its socket is gone");
        if (somebodyAnswers())
            return answered();
        if (std::chrono::steady_clock::now() > deadline)
            return fail(m_lockPath + " is locked, and nobody answers");
        std::this_thread::sleep_for(step);
    }
    if (somebodyAnswers())
        return answered();
    return listen();
}

localSocket::outcome localSocket::answered()
{
    fail("another daemon answers at " + m_path);
    return outcome::answered;
}

localSocket::outcome localSocket::fail(const std::string &reason)
{
    m_reason = reason;
    return outcome::failed;
}

/// Whoever ends removes the lock file, so a lock only counts on the file that still has the name. What a
/// crash has left in it goes.
bool localSocket::lock()
{
    constexpr int flags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
    m_lock = wire::descriptor(::open(m_lockPath.c_str(), flags, S_IRUSR | S_IWUSR));
    const int file = m_lock.get();
    struct stat held = {};
    return m_lock && flock(file, LOCK_EX | LOCK_NB) == 0 && fstat(file, &held) == 0 &&
           isAt(m_lockPath, held) && ftruncate(file, 0) == 0;
}

/// The process that holds the lock, while its socket is there; else 0.
pid_t localSocket::servingHolder() const
{
    char text[16] = {};
    return pread(m_lock.get(), text, sizeof text - 1, 0) > 0 ? static_cast<pid_t>(std::atol(text)) : 0;
}

bool localSocket::somebodyAnswers() const
{
    const wire::descriptor probe = newSocket();
    const sockaddr_un address = wire::socketAddress(m_path);
    // A daemon that is too busy to accept is one all the same.
    return connect(probe.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0 ||
           errno == EAGAIN;
}

localSocket::outcome localSocket::listen()
{
    unlink(m_path.c_str());
    wire::descriptor made = newSocket();
    const sockaddr_un address = wire::socketAddress(m_path);
    if (bind(made.get(), reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        ::listen(made.get(), backlog) != 0 || lstat(m_path.c_str(), &m_made) != 0)
        return fail(m_path + ": " + std::strerror(errno));
    m_listening = std::move(made);
    dprintf(m_lock.get(), "%d\n", static_cast<int>(getpid()));
    return outcome::listening;
}

void localSocket::close()
{
    if (!m_listening)
        return;
    [[maybe_unused]] const int emptied = ftruncate(m_lock.get(), 0);
    if (isAt(m_path, m_made))
        unlink(m_path.c_str());
    m_listening.close();
    unlink(m_lockPath.c_str());
    m_lock.close();
}

/// Takes away what daemons that were killed have left. Their places are locked meanwhile, so nobody who is
/// just starting is met; a daemon whose lock file was removed still answers.
void localSocket::sweep(const std::string &folder)
{
    std::set<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator each(folder, error), end; !error && each != end;
         each.increment(error)) {
        const std::filesystem::path file = each->path().filename();
        if (file.extension() == socketSuffix || file.extension() == lockSuffix)
            names.insert(file.stem());
    }
    for (const std::string &name : names) {
        localSocket left(folder, name);
        if (!left.lock() || left.somebodyAnswers())
            continue;
        unlink(left.m_path.c_str());
        unlink(left.m_lockPath.c_str());
    }
}
