#include "benchmarks/report.h"

#include <gtest/gtest.h>

#include <optional>

using bench::atLeast;
using bench::atMost;
using bench::Report;

TEST(Report, IsNotPassedWithoutAFigure) {
    const Report report;
    EXPECT_TRUE(report.isEmpty());
    EXPECT_FALSE(report.isPassed());
}

TEST(Report, IsPassedWhenEveryFloorIsReached) {
    Report report;
    report.add("times faster", 8.0, atLeast(8.0));
    report.add("allocations", 0.0, atMost(0.0));
    report.add("for information", 99.0, std::nullopt);
    EXPECT_FALSE(report.isEmpty());
    EXPECT_TRUE(report.isPassed());
}

TEST(Report, IsNotPassedWhenOneFloorIsMissed) {
    Report report;
    report.add("times faster", 8.0, atLeast(8.0));
    report.add("allocations", 1.0, atMost(0.0));
    EXPECT_FALSE(report.isPassed());
}
