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

bool replacedFile::open(const char *path)
{
    if (!*path)
        return false;
    *this = {};
    m_target = resolved(path);
    // Without O_NONBLOCK a pipe in the file's place would wait for a reader.
    m_old = fileDescriptor(::open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (m_old ? !isRegular(m_old.get()) : errno != ENOENT)
        return false;

    createTemporary();
    if (m_temporary)
        return true;
    m_inPlace = m_old && directoryForbids();
    return static_cast<bool>(m_old);
}

void replacedFile::createTemporary()
{
    // A name of its own: the target's may be as long as the file system allows.
    m_temporaryPath = m_target.substr(0, m_target.rfind('/') + 1) + "currentTimestamps.XXXXXX";
    m_temporary = fileDescriptor(mkostemp(m_temporaryPath.data(), O_CLOEXEC));
}

void replacedFile::keepAccessRights()
{
    struct stat old;
    if (m_old && fstat(m_old.get(), &old) == 0) {
        if (fchown(m_temporary.get(), old.st_uid, old.st_gid) != 0 &&
            fchown(m_temporary.get(), static_cast<uid_t>(-1), old.st_gid) != 0)
            old.st_mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
        fchmod(m_temporary.get(), old.st_mode & 07777);
        return;
    }
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(m_temporary.get(), 0666 & ~mask);
}

void replacedFile::replace(const contentWriter &write)
{
    if (m_temporary) {
        keepAccessRights();
        if (renameTemporary(write))
            return;
        unlink(m_temporaryPath.c_str());
    }
    if (m_inPlace)
        writeInPlace(write);
}

bool replacedFile::renameTemporary(const contentWriter &write)
{
    const bool whole = write(m_temporary.get());
    if (!m_temporary.close() || !whole)
        return false;
    if (std::rename(m_temporaryPath.c_str(), m_target.c_str()) == 0)
        return true;
    m_inPlace = m_old && directoryForbids();
    return false;
}

void replacedFile::writeInPlace(const contentWriter &write)
{
    if (ftruncate(m_old.get(), 0) == 0)
        write(m_old.get());
}
