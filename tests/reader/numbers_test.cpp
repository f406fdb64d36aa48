#include "reader/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr int kLargestInt = std::numeric_limits<int>::max();
constexpr int kSmallestInt = std::numeric_limits<int>::min();
constexpr quint64 kLargestULongLong = std::numeric_limits<quint64>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST(Numbers, RoundsARealNumberToAnInt) {
    EXPECT_EQ(reader::toInt(4.4), 4);
    EXPECT_EQ(reader::toInt(4.5), 5);
    EXPECT_EQ(reader::toInt(-4.4), -4);
    EXPECT_EQ(reader::toInt(QVariant(2.6F)), 3);
}

TEST(Numbers, SaturatesAtTheLimitsOfAnInt) {
    for (const double large : {2147483647.0, 2147483648.0, 1e25, kInfinity}) {
        EXPECT_EQ(reader::toInt(large), kLargestInt) << large;
        EXPECT_EQ(reader::toInt(QVariant(large)), kLargestInt) << large;
        EXPECT_EQ(reader::toInt(-large - 1.0), kSmallestInt) << large;
    }
    EXPECT_EQ(reader::toInt(QVariant(1e25F)), kLargestInt);
    EXPECT_EQ(reader::toInt(kNotANumber), 0);
}

TEST(Numbers, ConvertsWholeNumbersAndTextsAsQtDoes) {
    EXPECT_EQ(reader::toInt(QVariant(-7)), -7);
    EXPECT_EQ(reader::toInt(QVariant(true)), 1);
    EXPECT_EQ(reader::toInt(QVariant()), 0);
    EXPECT_EQ(reader::toULongLong(QVariant(-1)), kLargestULongLong);
    EXPECT_EQ(reader::toULongLong(QVariant::fromValue(kLargestULongLong)), kLargestULongLong);
}

TEST(Numbers, RoundsARealNumberToATick) {
    EXPECT_EQ(reader::toULongLong(7.5), 8U);
    EXPECT_EQ(reader::toULongLong(9223372036854775808.0), 9223372036854775808U);
    EXPECT_EQ(reader::toULongLong(-1.0), kLargestULongLong) << "as an int of -1 does";
    EXPECT_EQ(reader::toULongLong(-9223372036854775808.0), 9223372036854775808U)
        << "the smallest signed number";
    EXPECT_EQ(reader::toULongLong(-9223372036854777856.0), 0U) << "the next one below";
}

TEST(Numbers, SaturatesAtTheLimitsOfATick) {
    EXPECT_EQ(reader::toULongLong(18446744073709551616.0), kLargestULongLong);
    EXPECT_EQ(reader::toULongLong(kInfinity), kLargestULongLong);
    EXPECT_EQ(reader::toULongLong(-kInfinity), 0U);
    EXPECT_EQ(reader::toULongLong(kNotANumber), 0U);
}

TEST(Numbers, IncrementsUpToTheLargestInt) {
    EXPECT_EQ(reader::incrementSaturated(-1), 0);
    EXPECT_EQ(reader::incrementSaturated(kLargestInt - 1), kLargestInt);
    EXPECT_EQ(reader::incrementSaturated(kLargestInt), kLargestInt);
}
