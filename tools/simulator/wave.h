#pragma once

#include <cmath>

namespace simulator {

inline constexpr double kPi = 3.14159265358979323846;

/**
 * The sine of `turns` full turns with an error of about 4e-6. Does not use the C library's sine,
 * whose last bits differ between platforms, because a seed must give the same bytes on all of them.
 */
inline double wave(double turns) {
    double folded = turns - std::floor(turns + 0.5);
    if (folded > 0.25) {
        folded = 0.5 - folded;
    } else if (folded < -0.25) {
        folded = -0.5 - folded;
    }
    const double x = folded * 2.0 * kPi;
    const double square = x * x;
    return x * (1.0 - square / 6.0 *
                          (1.0 - square / 20.0 * (1.0 - square / 42.0 * (1.0 - square / 72.0))));
}

/** The cosine of `turns` full turns; see wave(). */
inline double waveCos(double turns) {
    return wave(turns + 0.25);
}

/** Wraps an angle in radians into -pi to pi. */
inline double wrappedAngle(double angle) {
    const double turns = angle / (2.0 * kPi);
    return (turns - std::floor(turns + 0.5)) * 2.0 * kPi;
}

}  // namespace simulator
