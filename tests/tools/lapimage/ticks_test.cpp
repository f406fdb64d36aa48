#include "tools/lapimage/ticks.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using rataip::lapimage::Ticks;
using rataip::lapimage::ticksFor;

TEST(Ticks, AreRoundNumbersAroundTheRange) {
    const Ticks ticks = ticksFor(3.0, 247.0, 6);
    EXPECT_EQ(ticks.values, (QList<double>{0.0, 50.0, 100.0, 150.0, 200.0, 250.0}));
    EXPECT_EQ(ticks.decimals, 0);
}

TEST(Ticks, GetTheDecimalsThatTheirStepsNeed) {
    EXPECT_EQ(ticksFor(0.0, 1.0, 3).decimals, 1);
    EXPECT_EQ(ticksFor(0.0, 0.04, 5).decimals, 2);
    EXPECT_EQ(ticksFor(0.0, 3e6, 5).decimals, 0);
}

TEST(Ticks, SpanNegativeNumbers) {
    const Ticks ticks = ticksFor(-180.0, 90.0, 4);
    EXPECT_EQ(ticks.lowest(), -200.0);
    EXPECT_EQ(ticks.highest(), 100.0);
}

TEST(Ticks, ContainAnyRange) {
    for (const double low : {-1e9, -3.7, -1e-6, 0.0, 1e-5, 42.0}) {
        for (const double width : {1e-4, 0.3, 1.0, 7.0, 999.0, 1e8}) {
            for (const int wanted : {2, 4, 11}) {
                const Ticks ticks = ticksFor(low, low + width, wanted);
                const double room = 1e-6 * width;
                EXPECT_GE(ticks.values.size(), 2);
                EXPECT_LE(ticks.values.size(), 2 * wanted + 2);
                EXPECT_LE(ticks.lowest(), low + room);
                EXPECT_GE(ticks.highest(), low + width - room);
            }
        }
    }
}

TEST(Ticks, WidenARangeThatIsAPoint) {
    for (const double value : {0.0, 5.0, -5.0, 1e20}) {
        const Ticks ticks = ticksFor(value, value, 5);
        EXPECT_LT(ticks.lowest(), value);
        EXPECT_GT(ticks.highest(), value);
    }
}

TEST(Ticks, WidenARangeThatNoStepDivides) {
    constexpr double kLeast = std::numeric_limits<double>::denorm_min();
    const Ticks ticks = ticksFor(0.0, kLeast, 5);
    EXPECT_GE(ticks.values.size(), 2);
    EXPECT_LT(ticks.lowest(), 0.0);
    EXPECT_GT(ticks.highest(), kLeast);
}

TEST(Ticks, ReplaceARangeThatCannotBeDrawn) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kMost = std::numeric_limits<double>::max();
    for (const auto& [low, high] :
         {std::pair(kNan, 1.0), std::pair(0.0, kNan), std::pair(-kInfinite, kInfinite),
          std::pair(2.0, 1.0), std::pair(-kMost, kMost)}) {
        const Ticks ticks = ticksFor(low, high, 5);
        EXPECT_EQ(ticks.lowest(), 0.0);
        EXPECT_EQ(ticks.highest(), 1.0);
    }
}

}  // namespace
