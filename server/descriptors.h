#pragma once

#include <sys/resource.h>

/// File descriptors that clients leave to the display, the log and the statistics. Without any, the display
/// library loses its connection while a window is painted, and waits for it for ever.
inline constexpr rlim_t keptDescriptors = 8;

/// When no descriptor is left, the next connection is tried for after so long.
inline constexpr int acceptAgainMs = 500;

/// Whether a channel on `descriptor` leaves enough of them; descriptors are numbered from the lowest on.
inline bool leavesDescriptors(long descriptor)
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    return static_cast<rlim_t>(descriptor) + keptDescriptors < limit.rlim_cur;
}
