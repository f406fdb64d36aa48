#include "tools/simulator/results.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

TimedLap lap(int number, double seconds) {
    return {number, seconds};
}

}  // namespace

TEST(Results, ShowALapOnlyWhenItIsDue) {
    Results results(false);
    results.report(7, lap(1, 90.0), 200.0, 0, 100);
    EXPECT_FALSE(results.settle(99));
    EXPECT_TRUE(results.lines().empty());
    EXPECT_EQ(results.position(7), 0);
    EXPECT_TRUE(results.settle(100));
    ASSERT_EQ(results.lines().size(), 1U);
    EXPECT_EQ(results.lines()[0].car, 7);
    EXPECT_EQ(results.lines()[0].lapsComplete, 1);
    EXPECT_EQ(results.lines()[0].last, 90.0);
    EXPECT_EQ(results.position(7), 1);
    EXPECT_FALSE(results.settle(101));
}

TEST(Results, ListACarWithoutATimeToo) {
    Results results(false);
    results.report(7, {0, std::nullopt}, 30.0, 2, 0);
    results.settle(0);
    EXPECT_EQ(results.lines()[0].last, -1.0);
    EXPECT_EQ(results.lines()[0].fastest, -1.0);
    EXPECT_EQ(results.lines()[0].lapsComplete, 0);
    EXPECT_EQ(results.lines()[0].incidents, 2);
}

TEST(Results, OrderByTheBestLapOutsideRaces) {
    Results results(false);
    results.report(1, lap(1, 92.0), 100.0, 0, 0);
    results.report(2, {0, std::nullopt}, 100.0, 0, 0);
    results.report(3, lap(1, 91.0), 100.0, 0, 0);
    results.settle(0);
    results.report(1, lap(2, 90.0), 190.0, 0, 5);
    results.report(3, lap(2, 95.0), 195.0, 0, 5);
    results.settle(5);
    EXPECT_EQ(results.position(1), 1);
    EXPECT_EQ(results.position(3), 2);
    EXPECT_EQ(results.position(2), 3);
    EXPECT_EQ(results.lines()[1].fastest, 91.0);
    EXPECT_EQ(results.lines()[1].fastestLap, 1);
    EXPECT_EQ(results.lines()[1].last, 95.0);
}

TEST(Results, OrderByDistanceAndTimeInRaces) {
    Results results(true);
    results.report(1, lap(2, 92.0), 200.0, 0, 0);
    results.report(2, lap(3, 95.0), 290.0, 0, 0);
    results.report(3, lap(2, 90.0), 201.0, 0, 0);
    EXPECT_TRUE(results.settleAll());
    EXPECT_EQ(results.position(2), 1);
    EXPECT_EQ(results.position(1), 2);
    EXPECT_EQ(results.position(3), 3);
    EXPECT_FALSE(results.settleAll());
}
