#include "tools/lapimage/scale.h"

#include "tools/lapimage/ticks.h"

#include <algorithm>
#include <cmath>

namespace rataip::lapimage {

namespace {

// Tolerates rounding, so that an end at a mark stays there.
constexpr double kTolerance = 1e-9;
// Adding it removes the sign of a negative zero, which would be displayed.
constexpr double kPlainZero = 0.0;

double below(double value, double step) {
    return std::floor(value / step + kTolerance) * step + kPlainZero;
}

double above(double value, double step) {
    return std::ceil(value / step - kTolerance) * step + kPlainZero;
}

QList<double> marksWithin(double low, double high, double step) {
    QList<double> marks;
    const double first = std::ceil(low / step - kTolerance);
    const auto count = static_cast<int>(std::floor(high / step + kTolerance) - first) + 1;
    for (int i = 0; i < count; ++i) {
        marks.append((first + i) * step + kPlainZero);
    }
    return marks;
}

}  // namespace

Scale scaleFor(double low, double high, int roomForMarks, Numbers numbers) {
    const Ticks ticks = ticksFor(low, high, std::max(roomForMarks, 1) + 1);
    const double step = ticks.values.at(1) - ticks.values.at(0);
    const bool isDrawable =
        low < high && ticks.lowest() <= low + step && ticks.highest() >= high - step;
    const double lowest = isDrawable ? low : ticks.lowest();
    const double highest = isDrawable ? high : ticks.highest();
    Scale scale;
    scale.step = step;
    scale.decimals = ticks.decimals;
    double end = scale.step / 2.0;
    if (numbers == Numbers::Whole && scale.step <= 1.0) {
        scale.step = 1.0;
        scale.decimals = 0;
        end = 1.0;
    }
    scale.low = below(lowest, end);
    scale.high = above(highest, end);
    scale.marks = marksWithin(scale.low, scale.high, scale.step);
    if (scale.marks.size() < 2) {
        scale.low = ticks.lowest();
        scale.high = ticks.highest();
        scale.marks = ticks.values;
    }
    return scale;
}

}  // namespace rataip::lapimage
