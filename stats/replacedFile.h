#pragma once

#include "stats/fileDescriptor.h"

#include <functional>
#include <string>

/// A file whose whole content is written anew. The new content goes to a temporary file beside the old one,
/// which it then takes the place of: whatever happens on the way, the file holds either all of the old or all
/// of the new. Only where the directory forbids that and the file itself can be written, it is written in
/// place.
class replacedFile
{
public:
    /// False if the file at `path` can be neither written nor created, as though it had been opened for
    /// writing; nothing has changed then. A file that may not be written is not replaced, whatever its
    /// directory allows; nor is anything but a regular file.
    bool open(const char *path);

    /// Writes all content to the descriptor that it is given; false if that failed.
    using contentWriter = std::function<bool(int descriptor)>;

    /// Gives the file that was opened its new content. Calls `write` a second time, with another descriptor,
    /// if the temporary file cannot take the old one's place.
    void replace(const contentWriter &write);

private:
    void createTemporary();
    void keepAccessRights();
    bool renameTemporary(const contentWriter &write);
    void writeInPlace(const contentWriter &write);

    std::string m_target;
    std::string m_temporaryPath;
    fileDescriptor m_old;
    fileDescriptor m_temporary;
    bool m_inPlace = false;
};
