#pragma once

#include <QString>

/// The remaining time as the total bar shows it: whole minutes above 300 seconds, minutes and seconds from
/// 60 on, seconds below. Empty for a negative `remainingSeconds`: the run has outlasted its estimate.
QString remainingText(int remainingSeconds);
