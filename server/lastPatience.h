#pragma once

/// Milliseconds that clients still have to take the last that they are told, at the daemon's end. All of them
/// together have two seconds from the first call on: one that never reads must not hold up the end, and a cut
/// event is worse than a late end.
int lastPatienceMs();
