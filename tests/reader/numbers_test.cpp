#include "reader/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr int largestInt = std::numeric_limits<int>::max();
constexpr int smallestInt = std::numeric_limits<int>::min();
constexpr quint64 largestULongLong = std::numeric_limits<quint64>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST(Numbers, RoundsARealNumberToAnInt) {
    EXPECT_EQ(reader::toInt(4.4), 4);
    EXPECT_EQ(reader::toInt(4.5), 5);
    EXPECT_EQ(reader::toInt(-4.4), -4);
    EXPECT_EQ(reader::toInt(QVariant(2.6F)), 3);
}

TEST(Numbers, HoldsTheNearestIntForWhatNoIntCanHold) {
    for (const double large : {2147483647.0, 2147483648.0, 1e25, infinity}) {
        EXPECT_EQ(reader::toInt(large), largestInt) << large;
        EXPECT_EQ(reader::toInt(QVariant(large)), largestInt) << large;
        EXPECT_EQ(reader::toInt(-large - 1.0), smallestInt) << large;
    }
    EXPECT_EQ(reader::toInt(QVariant(1e25F)), largestInt);
    EXPECT_EQ(reader::toInt(notANumber), 0);
}

TEST(Numbers, LeavesWholeNumbersAndTextsToQt) {
    EXPECT_EQ(reader::toInt(QVariant(-7)), -7);
    EXPECT_EQ(reader::toInt(QVariant(true)), 1);
    EXPECT_EQ(reader::toInt(QVariant()), 0);
    EXPECT_EQ(reader::toULongLong(QVariant(-1)), largestULongLong);
    EXPECT_EQ(reader::toULongLong(QVariant::fromValue(largestULongLong)), largestULongLong);
}

TEST(Numbers, RoundsARealNumberToATick) {
    EXPECT_EQ(reader::toULongLong(7.5), 8U);
    EXPECT_EQ(reader::toULongLong(9223372036854775808.0), 9223372036854775808U);
    EXPECT_EQ(reader::toULongLong(-1.0), largestULongLong) << "as an int of -1 does";
    EXPECT_EQ(reader::toULongLong(-9223372036854775808.0), 9223372036854775808U)
        << "the smallest signed number";
    EXPECT_EQ(reader::toULongLong(-9223372036854777856.0), 0U) << "the next one below";
}

TEST(Numbers, HoldsTheLargestTickForWhatNoTickCanHold) {
    EXPECT_EQ(reader::toULongLong(18446744073709551616.0), largestULongLong);
    EXPECT_EQ(reader::toULongLong(infinity), largestULongLong);
    EXPECT_EQ(reader::toULongLong(-infinity), 0U);
    EXPECT_EQ(reader::toULongLong(notANumber), 0U);
}

TEST(Numbers, CountsOnUpToTheLargestInt) {
    EXPECT_EQ(reader::incrementSaturated(-1), 0);
    EXPECT_EQ(reader::incrementSaturated(largestInt - 1), largestInt);
    EXPECT_EQ(reader::incrementSaturated(largestInt), largestInt);
}
