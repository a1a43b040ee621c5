#pragma once

/// How the remaining time of a run is estimated.
enum class estimateMode {
    /// From the record that the run follows, as long as it follows one.
    exact,
    /// From all records, whatever course the run takes; see `adaptiveRemaining`.
    adaptive,
};

/// The mode of the whole process. A change takes effect at the next tick.
extern estimateMode m_estimateMode;
