#pragma once

#include <cmath>
#include <cstdint>

namespace simulator {

/** Ticks of simulated time in a second; a snapshot is published for each. */
inline constexpr int kTicksPerSecond = 60;

/** Seconds of simulated time in a tick. */
inline constexpr double kSecondsPerTick = 1.0 / kTicksPerSecond;

/** Simulated time is a count of ticks, never the wall clock, so that runs can be repeated. */
using Tick = std::int64_t;

inline double secondsOf(Tick ticks) {
    return static_cast<double>(ticks) / kTicksPerSecond;
}

inline Tick ticksOf(double seconds) {
    return std::llround(seconds * kTicksPerSecond);
}

}  // namespace simulator
