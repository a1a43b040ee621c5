#pragma once

#include "client/progressctl/runRecords.h"

#include <string>
#include <vector>

/// An SVG picture of the runs' courses: seconds to the right, progress upwards, a line a run.
std::string plotOf(const std::vector<runRecord> &records, const std::string &title);
