#pragma once

#include "stats/fileDescriptor.h"

#include <functional>
#include <string>

/// A file whose whole content is written anew. The new content goes to a temporary file beside the old one,
/// which it then takes the place of: a full disk or a kill on the way leaves either all of the old or all of
/// the new. Only where the directory forbids that and the file itself can be written, it is written in place.
///
/// The content is not forced to the disk, since the event loop would stand still for it: a power failure may
/// cost the newest save.
class replacedFile
{
public:
    /// Opens the file at `path`, which has not changed afterwards. See `isOpen`.
    explicit replacedFile(const char *path);
    ~replacedFile();
    replacedFile(const replacedFile &) = delete;
    replacedFile &operator=(const replacedFile &) = delete;

    /// False if the file can be neither written nor created. A file that may not be written is not replaced,
    /// whatever its directory allows; nor is anything but a regular file.
    bool isOpen() const { return m_old || m_temporary; }

    /// Writes all content to the descriptor that it is given; false if that failed.
    using contentWriter = std::function<bool(int descriptor)>;

    /// Gives the file, which is open, its new content; once. Calls `write` a second time, with another
    /// descriptor, if the temporary file cannot take the old one's place.
    void replace(const contentWriter &write);

private:
    void createTemporary();
    void takeOverAccessRights();
    bool replaceByTemporary(const contentWriter &write);
    void writeInPlace(const contentWriter &write);

    std::string m_target;
    std::string m_temporaryPath;
    fileDescriptor m_old;
    fileDescriptor m_temporary;
    /// The file can be written, but not replaced.
    bool m_inPlace = false;
};
