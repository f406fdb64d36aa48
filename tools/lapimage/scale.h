#pragma once

#include <QList>

namespace rataip::lapimage {

/** The kind of numbers that a quantity consists of. */
enum class Numbers {
    Any,
    Whole,  // gears, counts, switches
};

/** A vertical axis that fits its range closely, so that little of the plot stays empty. */
struct Scale {
    double low = 0.0;
    double high = 1.0;
    double step = 1.0;    // between marks
    QList<double> marks;  // at least two, ascending, from `low` to `high`
    int decimals = 0;     // needed to distinguish the marks
};

/**
 * The axis for a range, with marks at steps of 1, 2 or 5 times a power of ten, about as many as
 * there is room for. Its ends are at whole or half steps, so that a slowly growing range rarely
 * moves them. A range that is empty, reversed or not finite is replaced by one that can be drawn.
 */
[[nodiscard]] Scale scaleFor(double low, double high, int roomForMarks,
                             Numbers numbers = Numbers::Any);

}  // namespace rataip::lapimage
