#include "tools/simulator/playback.h"

#include <gtest/gtest.h>

#include <set>

using namespace simulator;

TEST(Playback, AlwaysRunsAtNormalSpeedWhenLive) {
    Playback playback(false, 20.0, Random(1));
    for (int snapshot = 0; snapshot < 100000; ++snapshot) {
        playback.advance();
        ASSERT_EQ(playback.speed(), 1);
    }
    EXPECT_FALSE(playback.isReplay());
}

TEST(Playback, RunsAtOtherSpeedsNowAndThenInAReplay) {
    Playback playback(true, 20.0, Random(1));
    std::set<int> speeds;
    int normal = 0;
    constexpr int kSnapshots = 200000;
    for (int snapshot = 0; snapshot < kSnapshots; ++snapshot) {
        playback.advance();
        speeds.insert(playback.speed());
        normal += playback.speed() == 1 ? 1 : 0;
    }
    EXPECT_EQ(speeds, (std::set<int>{0, 1, 2, 4, 8}));
    EXPECT_GT(normal, kSnapshots * 8 / 10);
    EXPECT_TRUE(playback.isReplay());
}
