#include "tools/lapimage/ticks.h"

#include <algorithm>
#include <cmath>

namespace rataip::lapimage {

namespace {

/** The smallest step of 1, 2 or 5 times a power of ten that is at least `raw`. */
double roundStep(double raw) {
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    // Tolerates rounding, so that a step of exactly 2 stays 2.
    constexpr double kTolerance = 1e-9;
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (raw <= factor * power * (1.0 + kTolerance)) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

struct Range {
    double low;
    double high;
};

/** A range wide enough for steps in doubles. */
Range drawable(double low, double high) {
    if (!std::isfinite(low) || !std::isfinite(high) || low > high || !std::isfinite(high - low)) {
        return {0.0, 1.0};
    }
    const double magnitude = std::max(std::abs(low), std::abs(high));
    constexpr double kNarrowest = 1e-9;
    // A smaller step loses digits or becomes 0.
    constexpr double kSmallest = 1e-290;
    if (high - low <= std::max(magnitude * kNarrowest, kSmallest)) {
        const double margin = magnitude > kSmallest ? magnitude * 0.1 : 1.0;
        return {low - margin, high + margin};
    }
    return {low, high};
}

}  // namespace

Ticks ticksFor(double low, double high, int wanted) {
    const Range range = drawable(low, high);
    const double step = roundStep((range.high - range.low) / std::max(wanted - 1, 1));
    const double first = std::floor(range.low / step + 1e-9);
    const auto steps = static_cast<int>(std::ceil(range.high / step - 1e-9) - first);
    Ticks ticks;
    ticks.decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-9)));
    for (int i = 0; i <= steps; ++i) {
        ticks.values.append((first + i) * step);
    }
    return ticks;
}

}  // namespace rataip::lapimage
