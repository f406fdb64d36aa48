#pragma once

#include <cmath>

namespace reader {

/** Whether this is a fuel density, in kilograms a litre, and not none at all or no number. */
[[nodiscard]] inline bool isDensity(double density) {
    constexpr double zeroDensity = 1e-12;
    return std::fabs(density) > zeroDensity;
}

/** Whether a lap time, in seconds, is none at all. */
[[nodiscard]] inline bool isZeroLapTime(float seconds) {
    constexpr float zeroLapTimeSeconds = 1e-5F;
    return std::fabs(seconds) <= zeroLapTimeSeconds;
}

}  // namespace reader
