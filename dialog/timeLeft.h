#pragma once

#include <QString>

/// A remaining time, 0 or more seconds, as the fitted layout shows it: "15 s left", "2 min 10 s left", from
/// ten minutes on "12 min left", from an hour on "1 h 5 min left".
QString timeLeft(int seconds);
