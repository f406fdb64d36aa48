#pragma once

#include <cmath>
#include <cstdint>

namespace simulator {

/** Ticks per second of simulated time. Each tick publishes a snapshot. */
inline constexpr int kTicksPerSecond = 60;

/** Seconds of simulated time per tick. */
inline constexpr double kSecondsPerTick = 1.0 / kTicksPerSecond;

/** Simulated time counts ticks, not the wall clock, so that runs can be repeated. */
using Tick = std::int64_t;

inline double secondsOf(Tick ticks) {
    return static_cast<double>(ticks) / kTicksPerSecond;
}

inline Tick ticksOf(double seconds) {
    return std::llround(seconds * kTicksPerSecond);
}

}  // namespace simulator
