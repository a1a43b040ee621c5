#pragma once

#include "stats/runTable.h"
#include "stats/trustedFile.h"

#include <sys/types.h>

#include <optional>
#include <string>

class QIODevice;

/// Where the learned runs of a daemon are kept.
enum class statisticsPlace {
    /// "/var/instrument/currentTimestamps_<identifier>.txt", or the same name in "/var/tmp" where that one
    /// cannot be used.
    machine,
    /// A file for each name in "progressd" below $XDG_STATE_HOME (else ~/.local/state), which is this user's
    /// alone, and which several daemons may share. At most 256 names are kept.
    user,
};

/// Whether both paths of `identifier` on the machine fit. With an identifier that is too long nothing is
/// loaded or saved where its path does not fit.
bool statisticsPathFits(const char *identifier);

/// The file that keeps the run record table from one process to the next. Files that others have a hand in
/// are passed over; see `trustedFile`.
class statisticsFile
{
public:
    /// The file of `identifier` is the process's own from now on. Its records, `runTable::maxRecords` at
    /// most; lines that are no records are passed over. None without a readable file.
    ///
    /// Among the user's files a missing one has those of the machine's for its content.
    std::optional<std::vector<runRecord>> load(const char *identifier, statisticsPlace place);

    /// Whether other daemons may save to the file, too: what is saved is to hold what they have learned.
    bool isShared() const { return m_place == statisticsPlace::user && !m_identifier.empty(); }
    /// The lock of the user's folder, made where it is missing, which one process at a time has for as long
    /// as the result lasts. None, and a line in the log, where the folder is not to be had or somebody keeps
    /// the lock for more than half a second.
    static wire::descriptor lock();
    /// The records, if the file is another than this process has loaded or saved. To be asked under the lock,
    /// as it is saved then.
    std::optional<std::vector<runRecord>> loadChanged();

    /// Writes the table to the file of `identifier`, or, for a null pointer (the save after each run), to the
    /// file in use. False when it did not get there; see `replaceTrusted` for what is left of the old one.
    bool save(const runTable &table, const char *identifier);

    /// Path of the file in use; empty when there is none.
    const std::string &path() const { return m_path; }

private:
    /// Tells a file that was replaced from the one that was there before.
    struct version {
        ino_t inode = 0;
        std::int64_t changed = 0; ///< in nanoseconds
        bool operator==(const version &) const = default;
    };

    wire::descriptor openMachines(const char *identifier);
    static std::vector<runRecord> read(const wire::descriptor &file);
    static version versionOf(const wire::descriptor &file);

    std::string m_path;
    /// Empty while nothing is to be kept.
    std::string m_identifier;
    statisticsPlace m_place = statisticsPlace::machine;
    version m_version;
};
