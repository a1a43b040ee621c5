#pragma once

#include "progressctl/runRecords.h"

#include <string>
#include <vector>

/// An SVG picture of the runs' courses, drawn by gnuplot: seconds to the right, progress upwards, a line a
/// run. Fails (statusFile) when gnuplot is missing.
std::string plotOf(const std::vector<runRecord> &records, const std::string &title);
