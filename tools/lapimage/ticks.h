#pragma once

#include <QList>

namespace rataip::lapimage {

/** The marks of an axis: evenly spaced round numbers and the range that they span. */
struct Ticks {
    QList<double> values;  // at least two, ascending; the first and the last are the range's ends
    int decimals = 0;      // needed to distinguish them

    [[nodiscard]] double lowest() const { return values.constFirst(); }
    [[nodiscard]] double highest() const { return values.constLast(); }
};

/**
 * Marks around `low` to `high` at steps of 1, 2 or 5 times a power of ten, about `wanted` of them.
 * A range that is empty, reversed or not finite is replaced by one that can be drawn.
 */
[[nodiscard]] Ticks ticksFor(double low, double high, int wanted);

}  // namespace rataip::lapimage
