#include "tools/simulator/car.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace simulator;

namespace {

class CarOnShortTrack : public testing::Test {
protected:
    CarStep drive(int ticks) {
        CarStep all;
        for (int tick = 0; tick < ticks; ++tick) {
            const CarStep step = car.advance({});
            all.enteredPitRoad = all.enteredPitRoad || step.enteredPitRoad;
            all.leftPitRoad = all.leftPitRoad || step.leftPitRoad;
            if (step.crossedLineAfter) {
                all.crossedLineAfter = step.crossedLineAfter;
            }
        }
        return all;
    }

    const Track track = Track::shortCircuit();
    Car car{track, Random(1), 0.98, track.stall(3, 8)};
};

}  // namespace

TEST_F(CarOnShortTrack, HasNoPositionBeforeItComesIntoTheWorld) {
    EXPECT_EQ(car.lapDistPct(), -1.0);
    EXPECT_FALSE(car.inWorld());
    EXPECT_FALSE(car.onPitRoad());
    drive(10);
    EXPECT_EQ(car.lapDistPct(), -1.0);
}

TEST_F(CarOnShortTrack, StandsStillInTheGarageWithTheEngineOff) {
    car.park();
    const double before = car.lapDistPct();
    drive(100);
    EXPECT_EQ(car.lapDistPct(), before);
    EXPECT_EQ(car.speed(), 0.0);
    EXPECT_EQ(car.gear(), 0);
    EXPECT_EQ(car.rpm(), 0.0);
    EXPECT_FALSE(car.engineRuns());
    EXPECT_TRUE(car.onPitRoad());
    EXPECT_TRUE(car.inStall());
}

TEST_F(CarOnShortTrack, KeepsToTheLimitOnPitRoadAndLeavesIt) {
    car.park();
    car.getIn();
    EXPECT_TRUE(car.engineRuns());
    car.driveOff();
    bool left = false;
    for (int tick = 0; tick < 1200 && !left; ++tick) {
        left = car.advance({}).leftPitRoad;
        EXPECT_LE(car.speed(), track.description().pitLimitMetersPerS);
        EXPECT_EQ(car.onPitRoad(), !left);
    }
    EXPECT_TRUE(left);
    EXPECT_EQ(car.place(), Place::Track);
}

TEST_F(CarOnShortTrack, ComesToRestExactlyInItsStallAndStaysThere) {
    car.enterGridSlot(track.length() * 0.5);
    car.driveOff();
    car.planStop(true);
    const CarStep step = drive(3000);
    EXPECT_TRUE(step.enteredPitRoad);
    EXPECT_EQ(car.place(), Place::Stall);
    EXPECT_EQ(car.distance(), track.stall(3, 8));
    EXPECT_EQ(car.speed(), 0.0);
    EXPECT_EQ(car.rpm() > 0.0, true);
    EXPECT_FALSE(car.stopPlanned());
}

TEST_F(CarOnShortTrack, FillsItsTankInTheStall) {
    car.park();
    car.getIn();
    const double before = car.fuel();
    car.refuelTo(Car::kTank);
    drive(60 * 40);
    EXPECT_GT(car.fuel(), before);
    EXPECT_NEAR(car.fuel(), Car::kTank, 0.1);
}

TEST_F(CarOnShortTrack, MovesForwardAndBurnsFuelInEveryTickOnTheTrack) {
    car.enterGridSlot(0.0);
    car.driveOff();
    for (int tick = 0; tick < 3600; ++tick) {
        const double fuel = car.fuel();
        const double distance = car.distance();
        const CarStep step = car.advance({});
        EXPECT_LT(car.fuel(), fuel);
        if (!step.crossedLineAfter) {
            EXPECT_GT(car.distance(), distance);
        } else {
            EXPECT_GE(*step.crossedLineAfter, 0.0);
            EXPECT_LE(*step.crossedLineAfter, kSecondsPerTick);
        }
    }
}

TEST_F(CarOnShortTrack, UsesItsControlsAsADriverDoes) {
    car.enterGridSlot(0.0);
    car.driveOff();
    drive(600);
    bool braked = false;
    bool flatOut = false;
    bool steeredLeft = false;
    int highestGear = 0;
    for (int tick = 0; tick < 1500; ++tick) {
        drive(1);
        EXPECT_GE(car.throttle(), 0.0);
        EXPECT_LE(car.throttle(), 1.0);
        EXPECT_GE(car.brake(), 0.0);
        EXPECT_LE(car.brake(), 1.0);
        EXPECT_GE(car.gear(), 1);
        EXPECT_LE(car.gear(), Car::kGears);
        EXPECT_LT(car.rpm(), Car::kRedLineRpm * 1.1);
        EXPECT_LE(std::abs(car.yaw()), 3.1416);
        braked = braked || car.brake() > 0.3;
        flatOut = flatOut || car.throttle() > 0.9;
        steeredLeft = steeredLeft || car.steering() > 0.3;
        highestGear = std::max(highestGear, car.gear());
    }
    EXPECT_TRUE(braked);
    EXPECT_TRUE(flatOut);
    EXPECT_TRUE(steeredLeft);
    EXPECT_GT(highestGear, 2);
}
