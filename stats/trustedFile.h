#pragma once

#include "wire/system.h"

#include <QFileDevice>

#include <functional>

/// Files in folders that others can write to as well. Nothing is read from, or written to, what somebody else
/// has put there: links count only if they are this user's or root's; so does the file that they lead to,
/// which must be a regular one and must not be open to others for writing. (A private group of the user may
/// write.) What is passed over for its owner or its mode leaves a line in the log.

struct trustedFile {
    /// Open, or none.
    wire::descriptor descriptor;
    /// Where the links led to.
    std::string target;
    /// There is no such file, and none of somebody else's in its place either.
    bool isMissing = false;
};

/// Opens the file at `path`, which is not created. `access` is O_RDONLY or O_WRONLY.
trustedFile openTrusted(const char *path, int access);

enum class replacement {
    /// The file can be neither written nor made, or is not to be trusted; nothing has happened.
    impossible,
    /// What was written did not reach the disk: the old file is still there.
    failed,
    done,
};

/// Gives the file at `path` new content, which `write` writes, or makes it, with the user's mask and at most
/// the permissions `most`.
///
/// The old file is replaced once the new one is whole: a full disk or a kill on the way leaves all of the
/// old one. Only in a folder in which no file can be made it is written in place. Links stay, and so does the
/// mode; the owner, the group, access lists and other hard links do not.
replacement replaceTrusted(const char *path, QFileDevice::Permissions most,
                           const std::function<void(QIODevice &)> &write);
