#pragma once

/// Records the run that has just ended, `seconds` (at least 1) long, with the course in the snapshot pool
/// (at least one snapshot), and saves the table.
///
/// The run is merged into the most similar record if that is near enough: the record takes over the course
/// and half of the difference in duration. Any other run becomes a record of its own; in a full table it
/// takes the place of the record with the lowest found count, the oldest of those.
void recordRun(int seconds);
