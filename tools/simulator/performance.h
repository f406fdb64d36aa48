#pragma once

#include <algorithm>

namespace simulator {

/** The top speed of every car, m/s. */
inline constexpr double kTopSpeed = 76.0;

/** Deceleration under full braking, m/s^2. */
inline constexpr double kBraking = 13.0;

/** Acceleration at full throttle less drag at `speed` (m/s), m/s^2. */
inline double availableAcceleration(double speed) {
    constexpr double kFromRest = 8.5;
    constexpr double kAtTopSpeed = 0.4;
    return std::max(kAtTopSpeed, kFromRest * (1.0 - speed / 80.0));
}

/** Deceleration by air and tyres at `speed` (m/s), m/s^2. */
inline double drag(double speed) {
    return 0.12 + 0.00062 * speed * speed;
}

}  // namespace simulator
