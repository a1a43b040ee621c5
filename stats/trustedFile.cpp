#include "stats/trustedFile.h"

#include "log/dump.h"

#include <QFile>
#include <QSaveFile>
#include <QUuid>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace
{

bool isOurs(const struct stat &status)
{
    return status.st_uid == geteuid() || status.st_uid == 0;
}

bool othersCanWrite(const struct stat &status)
{
    const bool isPrivateGroup = status.st_uid == geteuid() && status.st_gid == getegid();
    return (status.st_mode & (isPrivateGroup ? S_IWOTH : S_IWOTH | S_IWGRP)) != 0;
}

/// Follows links up to what is none. False when one of them is somebody else's.
bool followLinks(std::filesystem::path &path)
{
    constexpr int mostLinks = 8;
    for (int links = 0; links < mostLinks; ++links) {
        struct stat status;
        if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
            return true;
        if (!isOurs(status)) {
            dump("---- passing over statistics behind a link of user", static_cast<int>(status.st_uid));
            return false;
        }
        std::error_code error;
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    }
    return false;
}

bool isTrusted(int descriptor)
{
    struct stat status;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    if (isOurs(status) && !othersCanWrite(status))
        return true;
    dump("---- passing over statistics that others can change, of user", static_cast<int>(status.st_uid));
    return false;
}

/// Some file systems find only now that there is no space; some cannot tell.
bool reachedDisk(int descriptor)
{
    return fdatasync(descriptor) == 0 || errno == EINVAL;
}

/// Usually the file's own name. But the toolkit can be told only names that are text, and it would follow a
/// link that somebody puts where there is no file yet: then it is a name that nobody foresees.
QString nameToSave(const trustedFile &file)
{
    QString name = QFile::decodeName(file.target.c_str());
    if (!file.isMissing && QFile::encodeName(name) == file.target.c_str())
        return name;
    const QString folder = name.left(name.lastIndexOf(u'/') + 1);
    return folder + "currentTimestamps." + QUuid::createUuid().toString(QUuid::WithoutBraces);
}

} // namespace

trustedFile openTrusted(const char *path, int access)
{
    std::filesystem::path target = path;
    trustedFile file;
    if (target.empty() || !followLinks(target))
        return file;
    file.target = target.string();
    // A pipe would wait for its other end, and a link that has come here meanwhile is somebody else's.
    file.descriptor =
        wire::descriptor(open(target.c_str(), access | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    file.isMissing = !file.descriptor && errno == ENOENT;
    if (file.descriptor && !isTrusted(file.descriptor.get()))
        file.descriptor.close();
    return file;
}

replacement replaceTrusted(const char *path, QFileDevice::Permissions most,
                           const std::function<void(QIODevice &)> &write)
{
    const trustedFile old = openTrusted(path, O_WRONLY);
    if (!old.descriptor && !old.isMissing)
        return replacement::impossible;
    const QString name = nameToSave(old);
    const bool isRenamed = QFile::encodeName(name) != old.target.c_str();
    QSaveFile file(name);
    file.setDirectWriteFallback(!isRenamed);
    if (!file.open(QIODevice::WriteOnly))
        return replacement::impossible;
    if (isRenamed)
        file.setPermissions(file.permissions() & most);
    write(file);
    // The toolkit's commit() misses that its buffer does not fit the disk any more.
    if (!file.flush() || !reachedDisk(file.handle()))
        file.cancelWriting();
    if (!file.commit())
        return replacement::failed;
    if (isRenamed && std::rename(QFile::encodeName(name).constData(), old.target.c_str()) != 0)
        return replacement::failed;
    return replacement::done;
}
