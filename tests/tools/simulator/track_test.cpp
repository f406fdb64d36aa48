#include "tools/simulator/track.h"

#include "tools/simulator/performance.h"
#include "tools/simulator/wave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace simulator;

namespace {

class EachTrack : public testing::TestWithParam<int> {
protected:
    const Track track = GetParam() == 0 ? Track::grandCircuit() : Track::shortCircuit();
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Track, EachTrack, testing::Values(0, 1));

TEST_P(EachTrack, ClosesAfterOneTurn) {
    double turned = 0.0;
    for (int meter = 0; meter < track.length(); ++meter) {
        turned += track.curvature(meter);
    }
    EXPECT_NEAR(std::abs(turned), 2.0 * kPi, 0.02);
    const double jump = wrappedAngle(track.heading(track.length() - 1.0) - track.heading(1.0));
    EXPECT_NEAR(jump, 0.0, 0.05);
}

TEST_P(EachTrack, HasSlowAndFastPlacesThatABrakeAndAnEngineConnect) {
    double slowest = kTopSpeed;
    double fastest = 0.0;
    for (int meter = 0; meter < track.length(); ++meter) {
        const double here = track.speed(meter);
        const double next = track.speed(meter + 1);
        slowest = std::min(slowest, here);
        fastest = std::max(fastest, here);
        EXPECT_LT((here * here - next * next) / 2.0, kBraking * 1.1) << meter;
        EXPECT_LT((next * next - here * here) / 2.0, availableAcceleration(here) * 1.1 + 0.1)
            << meter;
    }
    EXPECT_GT(fastest, slowest * 1.3);
}

TEST_P(EachTrack, BringsDistancesAround) {
    EXPECT_DOUBLE_EQ(track.around(track.length()), 0.0);
    EXPECT_DOUBLE_EQ(track.around(-10.0), track.length() - 10.0);
    EXPECT_LT(track.around(-1e-18), track.length());
    EXPECT_NEAR(track.ahead(track.length() - 5.0, 7.0), 12.0, 1e-9);
}

TEST_P(EachTrack, HasItsStallsOnPitRoad) {
    constexpr int kSlots = 64;
    for (int slot = 0; slot < kSlots; ++slot) {
        EXPECT_LT(track.ahead(track.pitEntry(), track.stall(slot, kSlots)),
                  track.ahead(track.pitEntry(), track.pitExit()));
    }
}

TEST(Track, TakesBetween90And100SecondsForALapOfTheGrandCircuit) {
    const Track track = Track::grandCircuit();
    EXPECT_GT(track.lapTime(), 85.0);
    EXPECT_LT(track.lapTime(), 100.0);
    EXPECT_GT(track.length(), 4000.0);
    EXPECT_LT(track.length(), 5000.0);
}

TEST(Track, TakesAbout20SecondsForALapOfTheShortCircuit) {
    const double lapTime = Track::shortCircuit().lapTime();
    EXPECT_GT(lapTime, 18.0);
    EXPECT_LT(lapTime, 24.0);
}
