#pragma once

#include <string>

/// The lock file: two lines with the ports that the servers listen on. It is there while the daemon serves.
/// Its name holds the identifier's bytes as they are, whatever the encoding.
class lockFile
{
public:
    explicit lockFile(const char *identifier);

    /// Whether the path is short enough.
    bool fits() const;
    const std::string &path() const { return m_path; }
    /// Writes the ports, 0 for a server that does not listen, into a new file in the place of the one that
    /// may be there. A file that cannot be made is no failure: the daemon runs without it. False only when
    /// something else stays in its place, by which clients would be misled: no regular file, or one of
    /// another user's that cannot be removed.
    bool write(int commandPort, int eventPort) const;
    void remove() const;

private:
    std::string m_path;
};
