#include "stats/replacedFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

namespace
{

/// The file that a chain of links ends at, so that the links stay.
std::string resolved(const char *path)
{
    char target[PATH_MAX];
    return realpath(path, target) ? target : path;
}

bool isRegular(int descriptor)
{
    struct stat status;
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// Whether the last call failed because of the directory (its permissions, its sticky bit, a mount), so that
/// the file itself may still be written. A full disk is no such reason: the old content would be lost.
bool directoryForbids()
{
    return errno == EACCES || errno == EPERM || errno == EROFS || errno == EBUSY;
}

} // namespace

replacedFile::replacedFile(const char *path) : m_target(resolved(path))
{
    // Without O_NONBLOCK a pipe in the file's place would wait for a reader.
    m_old = fileDescriptor(::open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    const bool isNew = !m_old && errno == ENOENT && *path;
    if (m_old && !isRegular(m_old.get()))
        m_old.close();
    if (!m_old && !isNew)
        return;
    createTemporary();
    m_inPlace = m_old && !m_temporary && directoryForbids();
}

replacedFile::~replacedFile()
{
    if (m_temporary)
        unlink(m_temporaryPath.c_str());
}

void replacedFile::createTemporary()
{
    // A name of its own: the target's may be as long as the file system allows.
    m_temporaryPath = m_target.substr(0, m_target.rfind('/') + 1) + "currentTimestamps.XXXXXX";
    m_temporary = fileDescriptor(mkostemp(m_temporaryPath.data(), O_CLOEXEC));
}

void replacedFile::takeOverAccessRights()
{
    struct stat old;
    if (m_old && fstat(m_old.get(), &old) == 0) {
        // Who may not give the file to its old owner may still give it to the old group.
        constexpr auto sameOwner = static_cast<uid_t>(-1);
        const bool isGroupKept = fchown(m_temporary.get(), old.st_uid, old.st_gid) == 0 ||
                                 fchown(m_temporary.get(), sameOwner, old.st_gid) == 0;
        // Another group gets what it had as part of all others, and no more than the old one.
        const mode_t groupRights = old.st_mode & (isGroupKept ? 070 : (old.st_mode & 07) << 3);
        fchmod(m_temporary.get(), (old.st_mode & 0707) | groupRights);
        return;
    }
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(m_temporary.get(), 0666 & ~mask);
}

void replacedFile::replace(const contentWriter &write)
{
    if (m_temporary && replaceByTemporary(write))
        return;
    if (m_inPlace)
        writeInPlace(write);
}

bool replacedFile::replaceByTemporary(const contentWriter &write)
{
    takeOverAccessRights();
    bool isWhole = write(m_temporary.get());
    isWhole = m_temporary.close() && isWhole;
    if (isWhole && std::rename(m_temporaryPath.c_str(), m_target.c_str()) == 0)
        return true;
    m_inPlace = isWhole && m_old && directoryForbids();
    unlink(m_temporaryPath.c_str());
    return false;
}

void replacedFile::writeInPlace(const contentWriter &write)
{
    if (ftruncate(m_old.get(), 0) == 0)
        write(m_old.get());
}
