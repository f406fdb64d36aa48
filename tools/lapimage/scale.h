#pragma once

#include <QList>

namespace rataip::lapimage {

/** What a quantity counts in. */
enum class Numbers {
    Any,
    Whole,  // gears, counts, switches: nothing lies between two of them
};

/** An upright axis that hugs what it shows: little of the plot stays empty above and below. */
struct Scale {
    double low = 0.0;
    double high = 1.0;
    double step = 1.0;    // between marks
    QList<double> marks;  // at least two, ascending, from `low` to `high`
    int decimals = 0;     // that it takes to tell the marks apart
};

/**
 * The axis for a range, with marks at steps of 1, 2 or 5 times a power of ten, about as many as
 * there is room for. Its ends lie at whole or half steps, so that a range that grows bit by bit
 * moves them rarely. A range that is empty, turned round or not finite is widened to one that can
 * be drawn.
 */
[[nodiscard]] Scale scaleFor(double low, double high, int roomForMarks,
                             Numbers numbers = Numbers::Any);

}  // namespace rataip::lapimage
