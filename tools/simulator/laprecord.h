#pragma once

#include "tools/simulator/clock.h"

#include <optional>

namespace simulator {

/** How a stretch on the track began and ended. */
enum class LapKind {
    Out,     // began where pit road ends, or on the grid
    Flying,  // from line to line
    In,      // began at the line, ended where pit road begins
};

/**
 * A stretch that a car drove on the track in the model: from pit road, the grid or the line to the
 * line, pit road, or wherever it was cut short.
 */
struct LapRecord {
    int car;
    int lap;  // number of the lap, 0 before the first line
    LapKind kind;
    bool complete;                  // ended at the line
    std::optional<double> seconds;  // official time, if any
    int session;                    // number of the session in its weekend
    Tick start;                     // first tick of the stretch
    Tick finish;                    // tick in which it ended
};

}  // namespace simulator
