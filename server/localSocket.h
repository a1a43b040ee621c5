#pragma once

#include "wire/system.h"

#include <string>
#include <sys/stat.h>

/// Finds out where the sockets lie before the toolkit, which makes a runtime folder where XDG_RUNTIME_DIR
/// names none, and gives it this session's, or that one, for its own. To be called before the application
/// object is made.
void settleLocalFolder();

/// The listening socket of one daemon, with its place in the file system. A lock on a file beside it, held
/// as long as this object lives, keeps two daemons from taking the same place from each other; in it stands
/// the daemon's process number while it serves. What a crash has left behind is replaced, and the files of
/// others that were killed are swept away.
class localSocket
{
public:
    enum class outcome {
        listening,
        answered, ///< another daemon answers at that path
        failed,
    };

    localSocket() = default;
    ~localSocket() { close(); }
    localSocket(const localSocket &) = delete;
    localSocket &operator=(const localSocket &) = delete;

    /// Takes the place that `identifier`, any bytes, has; `reason()` says what was in the way.
    outcome open(const char *identifier);
    const std::string &reason() const { return m_reason; }
    /// Removes the socket, if it is still this one, and gives the place up; the channels stay. A signal's
    /// handler may call it.
    void close();

    /// The listening descriptor, which does not block; -1 when it is not open.
    int descriptor() const { return m_listening.get(); }

private:
    localSocket(const std::string &folder, const std::string &name);

    static void sweep(const std::string &folder);
    outcome take();
    outcome answered();
    outcome fail(const std::string &reason);
    bool lock();
    pid_t servingHolder() const;
    bool somebodyAnswers() const;
    outcome listen();

    std::string m_path;
    std::string m_lockPath;
    std::string m_reason;
    wire::descriptor m_listening;
    wire::descriptor m_lock;
    /// What the socket is in the file system.
    struct stat m_made = {};
};
