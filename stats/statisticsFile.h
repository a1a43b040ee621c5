#pragma once

/// The statistics file keeps the run record table from one process to the next. There is one for each
/// identifier of a daemon: "/var/instrument/currentTimestamps_<identifier>.txt", or the same name in
/// "/var/tmp" where that one cannot be used. Files that others have a hand in are passed over; see
/// `trustedFile`.

/// Path of the file in use; empty when no path fits.
extern char datafile[1024];

/// Whether both paths of `identifier` fit `datafile`. With an identifier that is too long nothing is loaded
/// or saved where its path does not fit.
bool statisticsPathFits(const char *identifier);

/// Fills the table from the file of `identifier`, which is the process's own from now on. Without a readable
/// file the table stays as it is. At most `maxRecords` records are kept; lines that are no records are passed
/// over.
void loadStatistics(const char *identifier);

/// Writes the table to the file of `identifier`, or, for a null pointer (the save after each run), to the
/// file in use. A file that cannot be written leaves the table as it is and is not reported; see
/// `replaceTrusted` for what is left of the old one.
void saveStatistics(const char *identifier);
