#pragma once

#include <algorithm>

namespace simulator {

/** Speed that no car reaches beyond, m/s. */
inline constexpr double kTopSpeed = 76.0;

/** Deceleration under full braking, m/s^2. */
inline constexpr double kBraking = 13.0;

/** What the engine gives at `speed` (m/s) under full throttle after drag, m/s^2. */
inline double availableAcceleration(double speed) {
    constexpr double kFromRest = 8.5;
    constexpr double kAtTopSpeed = 0.4;
    return std::max(kAtTopSpeed, kFromRest * (1.0 - speed / 80.0));
}

/** What air and tyres take at `speed` (m/s), m/s^2. */
inline double drag(double speed) {
    return 0.12 + 0.00062 * speed * speed;
}

}  // namespace simulator
