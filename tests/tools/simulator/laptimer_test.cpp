#include "tools/simulator/laptimer.h"

#include <gtest/gtest.h>

using namespace simulator;

namespace {

constexpr Tick kDelay = 10;

LapTimer timer() {
    return LapTimer({kDelay, kDelay}, Random(1));
}

// Runs the timer up to `tick`.
void runTo(LapTimer& timer, Tick from, Tick tick) {
    for (Tick now = from; now <= tick; ++now) {
        timer.settle(now);
    }
}

}  // namespace

TEST(LapTimer, StartsWithoutALapATimeOrABest) {
    const LapTimer fresh = timer();
    EXPECT_EQ(fresh.lap(), 0);
    EXPECT_EQ(fresh.lapCompleted(), -1);
    EXPECT_EQ(fresh.lastLapTime(), -1.0);
    EXPECT_EQ(fresh.bestLapTime(), -1.0);
    EXPECT_EQ(fresh.bestLap(), -1);
    EXPECT_EQ(fresh.currentLapTime(50.0), 0.0);
}

TEST(LapTimer, CountsTheFirstLapWithoutATime) {
    LapTimer laps = timer();
    const TimedLap lap = laps.crossLine(20.0, 1200);
    EXPECT_EQ(lap.number, 0);
    EXPECT_FALSE(lap.seconds);
    laps.settle(1200);
    EXPECT_EQ(laps.lap(), 1);
    EXPECT_EQ(laps.lapCompleted(), -1);
    EXPECT_EQ(laps.currentLapTime(20.05), 0.0);
    runTo(laps, 1201, 1200 + kDelay);
    EXPECT_EQ(laps.lapCompleted(), 0);
    EXPECT_EQ(laps.lastLapTime(), -1.0);
    EXPECT_NEAR(laps.currentLapTime(21.0), 1.0, 1e-9);
}

TEST(LapTimer, PublishesALapAllInOneTickSomeTimeAfterTheLine) {
    LapTimer laps = timer();
    laps.crossLine(10.0, 600);
    runTo(laps, 600, 3000);
    const TimedLap lap = laps.crossLine(100.00004, 6000);
    ASSERT_TRUE(lap.seconds);
    EXPECT_EQ(*lap.seconds, 90.0);
    EXPECT_EQ(laps.lap(), 2);
    runTo(laps, 6000, 6000 + kDelay - 1);
    EXPECT_EQ(laps.lapCompleted(), 0);
    EXPECT_EQ(laps.lastLapTime(), -1.0);
    EXPECT_NEAR(laps.currentLapTime(100.1), 90.1, 1e-9);
    laps.settle(6000 + kDelay);
    EXPECT_EQ(laps.lapCompleted(), 1);
    EXPECT_EQ(laps.lastLapTime(), 90.0);
    EXPECT_EQ(laps.bestLapTime(), 90.0);
    EXPECT_EQ(laps.bestLap(), 1);
    EXPECT_NEAR(laps.currentLapTime(100.2), 0.2, 1e-3);
}

TEST(LapTimer, KeepsTheBestLap) {
    LapTimer laps = timer();
    laps.crossLine(0.0, 0);
    laps.crossLine(90.0, 5400);
    laps.crossLine(178.0, 10680);
    laps.crossLine(270.0, 16200);
    runTo(laps, 16200, 16300);
    EXPECT_EQ(laps.lastLapTime(), 92.0);
    EXPECT_EQ(laps.bestLapTime(), 88.0);
    EXPECT_EQ(laps.bestLap(), 2);
}

TEST(LapTimer, PublishesALateLapWhenTheNextOneEndsFirst) {
    LapTimer laps = timer();
    laps.crossLine(0.0, 0);
    laps.crossLine(90.0, 5400);
    laps.crossLine(90.1, 5406);
    EXPECT_EQ(laps.lapCompleted(), 1);
    EXPECT_EQ(laps.lastLapTime(), 90.0);
}

TEST(LapTimer, ForgetsEverythingInANewSession) {
    LapTimer laps = timer();
    laps.crossLine(0.0, 0);
    laps.crossLine(90.0, 5400);
    laps.reset();
    runTo(laps, 5400, 5500);
    EXPECT_EQ(laps.lap(), 0);
    EXPECT_EQ(laps.lapCompleted(), -1);
    EXPECT_EQ(laps.lastLapTime(), -1.0);
    EXPECT_EQ(laps.bestLapTime(), -1.0);
    EXPECT_FALSE(laps.crossLine(10.0, 600).seconds);
}

TEST(LapTimer, GivesNoTimeToTheLapAfterAnAbandonedOne) {
    LapTimer laps = timer();
    laps.crossLine(0.0, 0);
    laps.crossLine(90.0, 5400);
    laps.abandonLap();
    EXPECT_EQ(laps.lapCompleted(), 1);
    EXPECT_EQ(laps.currentLapTime(95.0), 0.0);
    EXPECT_FALSE(laps.crossLine(200.0, 12000).seconds);
}
