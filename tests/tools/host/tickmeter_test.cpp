#include "tools/host/tickmeter.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace std::chrono_literals;
using rataip::host::sessionTick;
using rataip::host::TickMeter;
using TLM::SDK::Sample;

const TickMeter::Clock::time_point kStart{1000s};

Sample sampleWithTick(const QVariant& tick) {
    Sample sample;
    sample.setValue(QStringLiteral("sessiontick"), tick, QString());
    return sample;
}

TEST(SessionTick, IsTheFirstSamplesTick) {
    EXPECT_EQ(sessionTick({sampleWithTick(17), sampleWithTick(18)}), 17U);
}

TEST(SessionTick, TakesTheUnsignedNumberOfTheOtherCars) {
    EXPECT_EQ(sessionTick({sampleWithTick(QVariant::fromValue<quint64>(17))}), 17U);
}

TEST(SessionTick, HasNoValueWithoutSamplesOrWithoutTheValue) {
    EXPECT_EQ(sessionTick({}), std::nullopt);
    EXPECT_EQ(sessionTick({Sample()}), std::nullopt);
}

TEST(SessionTick, HasNoValueForATextThatIsNotANumber) {
    EXPECT_EQ(sessionTick({sampleWithTick(QStringLiteral("soon"))}), std::nullopt);
}

TEST(TickMeterLost, CountsNothingWhileTicksFollowEachOther) {
    TickMeter meter(kStart);
    meter.add(5);
    meter.add(6);
    meter.add(7);
    EXPECT_EQ(meter.received(), 3U);
    EXPECT_EQ(meter.lost(), 0U);
}

TEST(TickMeterLost, CountsTheTicksOfAGap) {
    TickMeter meter(kStart);
    meter.add(5);
    meter.add(9);
    EXPECT_EQ(meter.lost(), 3U);
}

TEST(TickMeterLost, CountsNothingForANumberThatGoesBackOrStays) {
    TickMeter meter(kStart);
    meter.add(500);
    meter.add(3);
    meter.add(3);
    meter.add(4);
    EXPECT_EQ(meter.lost(), 0U);
}

TEST(TickMeterLost, GoesOnAcrossTicksWithoutANumber) {
    TickMeter meter(kStart);
    meter.add(5);
    meter.add(std::nullopt);
    meter.add(7);
    EXPECT_EQ(meter.received(), 3U);
    EXPECT_EQ(meter.lost(), 1U);
}

TEST(TickMeterLost, DoesNotCountTheTimeBetweenTwoConnections) {
    TickMeter meter(kStart);
    meter.add(5);
    meter.beginConnection(kStart + 60s);
    meter.add(3605);
    EXPECT_EQ(meter.lost(), 0U);
}

TEST(TickMeterLost, HandlesTheWholeRangeOfTickNumbers) {
    TickMeter meter(kStart);
    meter.add(0);
    meter.add(std::numeric_limits<quint64>::max());
    EXPECT_EQ(meter.lost(), std::numeric_limits<quint64>::max() - 1);
}

TEST(TickMeterRate, IsTheTicksOfTheTimeSinceTheLastCall) {
    TickMeter meter(kStart);
    for (quint64 tick = 0; tick < 30; ++tick) {
        meter.add(tick);
    }
    EXPECT_DOUBLE_EQ(meter.takeRate(kStart + 500ms), 60.0);
    meter.add(30);
    EXPECT_DOUBLE_EQ(meter.takeRate(kStart + 1500ms), 1.0);
    EXPECT_DOUBLE_EQ(meter.takeRate(kStart + 2500ms), 0.0);
}

TEST(TickMeterRate, StartsAgainWithANewConnection) {
    TickMeter meter(kStart);
    meter.add(1);
    meter.beginConnection(kStart + 100s);
    meter.add(2);
    meter.add(3);
    EXPECT_DOUBLE_EQ(meter.takeRate(kStart + 101s), 2.0);
}

TEST(TickMeterRate, IsZeroWhenNoTimeHasPassed) {
    TickMeter meter(kStart);
    meter.add(1);
    EXPECT_DOUBLE_EQ(meter.takeRate(kStart), 0.0);
    EXPECT_DOUBLE_EQ(meter.takeRate(kStart + 1s), 1.0);
}

}  // namespace
