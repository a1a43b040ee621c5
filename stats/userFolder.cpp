#include "stats/userFolder.h"

#include "log/dump.h"
#include "wire/places.h"

#include <QDir>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

namespace
{

/// False when it cannot be made, or is somebody else's.
bool makeUserFolder(const std::string &folder)
{
    const mode_t mask = umask(077);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    umask(mask);
    struct stat status;
    if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != geteuid())
        return false;
    return (status.st_mode & 077) == 0 || chmod(folder.c_str(), 0700) == 0;
}

} // namespace

fileDescriptor lockUserFolder()
{
    const std::string folder = wire::learnedFolder();
    if (!makeUserFolder(folder)) {
        dump("---- the folder of learned runs cannot be had", errno);
        return fileDescriptor();
    }
    fileDescriptor file(open((folder + "/lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600));
    for (int tries = 50; file && flock(file.get(), LOCK_EX | LOCK_NB) != 0; --tries) {
        if (tries > 0)
            QThread::msleep(10);
        else
            file.close();
    }
    if (!file)
        dump("---- the learned runs are locked", errno);
    return file;
}

void makeRoomFor(const std::string &path)
{
    constexpr qsizetype mostNames = 256;
    const QFileInfo own(QFile::decodeName(path.c_str()));
    if (own.exists())
        return;
    const auto names = own.dir().entryInfoList({"*.txt"}, QDir::Files | QDir::Hidden, QDir::Time);
    for (qsizetype i = mostNames - 1; i < names.size(); ++i)
        QFile::remove(names[i].filePath());
}
