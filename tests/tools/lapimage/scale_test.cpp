#include "tools/lapimage/scale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using rataip::lapimage::Numbers;
using rataip::lapimage::Scale;
using rataip::lapimage::scaleFor;

TEST(Scale, EndsAtHalfStepsAroundTheRange) {
    const Scale scale = scaleFor(0.0, 205.0, 5);
    EXPECT_EQ(scale.low, 0.0);
    EXPECT_EQ(scale.high, 225.0);
    EXPECT_EQ(scale.marks, (QList<double>{0.0, 50.0, 100.0, 150.0, 200.0}));
    EXPECT_EQ(scale.decimals, 0);
}

TEST(Scale, HasNoNegativeZero) {
    for (const Scale& scale : {scaleFor(0.0, 205.0, 5), scaleFor(-50.0, 50.0, 4)}) {
        for (const double mark : scale.marks) {
            EXPECT_FALSE(mark == 0.0 && std::signbit(mark));
        }
    }
}

TEST(Scale, LeavesNothingEmptyWhereTheRangeEndsAtAMark) {
    const Scale scale = scaleFor(0.0, 100.0, 4);
    EXPECT_EQ(scale.low, 0.0);
    EXPECT_EQ(scale.high, 100.0);
}

TEST(Scale, GetsTheDecimalsThatItsStepsNeed) {
    EXPECT_EQ(scaleFor(0.0, 1.0, 2).decimals, 1);
    EXPECT_EQ(scaleFor(0.0, 0.04, 4).decimals, 2);
}

TEST(Scale, HasNoMarksBetweenWholeNumbers) {
    const Scale gears = scaleFor(4.0, 5.0, 4, Numbers::Whole);
    EXPECT_EQ(gears.marks, (QList<double>{4.0, 5.0}));
    EXPECT_EQ(gears.low, 4.0);
    EXPECT_EQ(gears.high, 5.0);
    EXPECT_EQ(gears.decimals, 0);
    EXPECT_EQ(scaleFor(0.0, 6.0, 3, Numbers::Whole).marks, (QList<double>{0.0, 2.0, 4.0, 6.0}));
    EXPECT_EQ(scaleFor(3.0, 3.0, 3, Numbers::Whole).decimals, 0);
}

TEST(Scale, ContainsAnyRange) {
    for (const double low : {-1e9, -3.7, -1e-6, 0.0, 1e-5, 22.6, 42.0}) {
        for (const double width : {1e-3, 0.3, 1.0, 4.1, 7.0, 999.0, 1e8}) {
            for (const int marks : {1, 2, 4, 11}) {
                for (const Numbers numbers : {Numbers::Any, Numbers::Whole}) {
                    const Scale scale = scaleFor(low, low + width, marks, numbers);
                    const double rounding = 1e-6 * std::max(width, scale.step);
                    EXPECT_LE(scale.low, low + rounding);
                    EXPECT_GE(scale.high, low + width - rounding);
                    EXPECT_GE(scale.marks.size(), 2) << low << " " << width << " " << marks;
                    EXPECT_LE(scale.marks.size(), marks + 3);
                    EXPECT_GE(scale.marks.constFirst(), scale.low - rounding);
                    EXPECT_LE(scale.marks.constLast(), scale.high + rounding);
                }
            }
        }
    }
}

TEST(Scale, ReplacesARangeThatCannotBeDrawn) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kMost = std::numeric_limits<double>::max();
    for (const auto& [low, high] :
         {std::pair(kNan, 1.0), std::pair(0.0, kNan), std::pair(-kInfinite, kInfinite),
          std::pair(2.0, 1.0), std::pair(-kMost, kMost)}) {
        const Scale scale = scaleFor(low, high, 5);
        EXPECT_EQ(scale.low, 0.0);
        EXPECT_EQ(scale.high, 1.0);
    }
}

}  // namespace
