#pragma once

#include "stats/adaptiveEstimate.h"

#include <span>

/// The newest records that have a found count, 64 at most, as the adaptive estimate wants them. Made anew
/// only after the table has changed; valid until the next call.
std::span<const learnedCourse> newestCourses();
