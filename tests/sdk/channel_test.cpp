#include "sdk/channel.h"

#include "tests/support/printqt.h"

#include <gtest/gtest.h>

#include <limits>

using TLM::SDK::Channel;

TEST(Channel, StartsEmptyWithoutUnit) {
    const Channel channel;
    EXPECT_TRUE(channel.samples.isEmpty());
    EXPECT_TRUE(channel.unit().isEmpty());
}

TEST(Channel, ReadsAndOverwritesEntries) {
    Channel channel;
    channel.setUnit("m");
    channel.samples = {1.0, 2.0};
    const QList<double> kept = channel.samples;
    channel.setSample(1, 5.0);
    EXPECT_EQ(channel.sample(0), 1.0);
    EXPECT_EQ(channel.sample(1), 5.0);
    EXPECT_EQ(channel.samples.size(), 2);
    EXPECT_EQ(kept, QList<double>({1.0, 2.0})) << "a shared list is copied before the write";
    EXPECT_EQ(channel.unit(), "m");
}

TEST(Channel, TakesEverythingBelowTheSinglePrecisionThresholdForValid) {
    Channel channel;
    channel.samples = {0.0, -1.0, -1e300, 1e24, 9.99e23};
    for (long long i = 0; i < channel.samples.size(); ++i) {
        EXPECT_TRUE(channel.isValid(i)) << i;
    }
}

TEST(Channel, RefusesMarkersInfinityAndNaN) {
    Channel channel;
    channel.samples = {1.0000000138484279e+24, 9.999999562023526e+24, 1e25,
                       std::numeric_limits<double>::infinity(),
                       std::numeric_limits<double>::quiet_NaN()};
    for (long long i = 0; i < channel.samples.size(); ++i) {
        EXPECT_FALSE(channel.isValid(i)) << i;
    }
}
