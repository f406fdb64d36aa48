#include "sdk/lap.h"

#include "tests/support/printqt.h"

#include <gtest/gtest.h>

#include <functional>
#include <type_traits>

using TLM::SDK::Channel;
using TLM::SDK::Lap;
using TLM::SDK::LapHeader;
using TLM::SDK::Sample;
using TLM::SDK::Value;

static_assert(std::is_base_of_v<LapHeader, Lap>);
static_assert(std::is_copy_constructible_v<Lap>);

namespace {

QSharedPointer<Channel> channelOf(const QList<double>& samples) {
    auto channel = QSharedPointer<Channel>::create();
    channel->samples = samples;
    return channel;
}

}  // namespace

TEST(Lap, StartsEmpty) {
    const Lap lap;
    EXPECT_TRUE(lap.isEmpty());
    EXPECT_EQ(lap.size(), 0);
    EXPECT_TRUE(lap.channels().isEmpty());
    EXPECT_TRUE(lap.values().isEmpty());
    EXPECT_FALSE(lap.completed());
}

TEST(Lap, KeepsRecordedAndCalculatedChannelsSeparately) {
    Lap lap;
    lap.addChannel(channelOf({1}), "speed");
    lap.addCalculatedChannel(channelOf({2}), "speed");
    EXPECT_EQ(lap.channel("speed")->sample(0), 1);
    EXPECT_EQ(lap.calculatedChannel("speed")->sample(0), 2);

    lap.removeChannel("speed");
    EXPECT_FALSE(lap.containsRecordedChannel("speed"));
    EXPECT_TRUE(lap.containsCalculatedChannel("speed"));
    EXPECT_TRUE(lap.containsChannel("speed"));

    lap.addChannel(channelOf({1}), "speed");
    lap.removeCalculatedChannel("speed");
    EXPECT_TRUE(lap.containsRecordedChannel("speed"));
    EXPECT_FALSE(lap.containsCalculatedChannel("speed"));
    EXPECT_TRUE(lap.containsChannel("speed"));
}

TEST(Lap, GivesNullForAbsentNamesAndIgnoresTheirRemoval) {
    Lap lap;
    EXPECT_TRUE(lap.channel("a").isNull());
    EXPECT_TRUE(lap.calculatedChannel("a").isNull());
    EXPECT_FALSE(lap.containsChannel("a"));
    lap.removeChannel("a");
    lap.removeCalculatedChannel("a");
    EXPECT_TRUE(lap.isEmpty());
}

TEST(Lap, LooksForAChannelAmongItsOwnKindOnly) {
    Lap lap;
    lap.addChannel(channelOf({1}), "recorded");
    lap.addCalculatedChannel(channelOf({1}), "calculated");
    EXPECT_TRUE(lap.channel("calculated").isNull());
    EXPECT_TRUE(lap.calculatedChannel("recorded").isNull());
}

TEST(Lap, ReplacesAChannelOfTheSameName) {
    Lap lap;
    lap.addChannel(channelOf({1}), "a");
    lap.addChannel(channelOf({2}), "a");
    lap.addCalculatedChannel(channelOf({3}), "b");
    lap.addCalculatedChannel(channelOf({4}), "b");
    EXPECT_EQ(lap.channel("a")->sample(0), 2);
    EXPECT_EQ(lap.calculatedChannel("b")->sample(0), 4);
}

TEST(Lap, TakesOwnershipOfARawChannel) {
    Lap lap;
    lap.addChannel(new Channel, "a");
    const QWeakPointer<Channel> watched = lap.channel("a");
    EXPECT_FALSE(watched.isNull());
    lap.removeChannel("a");
    EXPECT_TRUE(watched.isNull());
}

TEST(Lap, NeverStoresANullChannel) {
    Lap lap;
    lap.addChannel(channelOf({1}), "a");
    lap.addChannel(static_cast<Channel*>(nullptr), "a");
    lap.addChannel(QSharedPointer<Channel>(), "b");
    lap.addCalculatedChannel(QSharedPointer<Channel>(), "c");
    EXPECT_EQ(lap.getAvailableRecordedChannels(), QStringList({"a"}));
    EXPECT_TRUE(lap.getAvailableCalculatedChannels().isEmpty());
    EXPECT_FALSE(lap.channel("a").isNull());
}

TEST(Lap, ListsChannelNamesInOrder) {
    Lap lap;
    for (const char* name : {"b", "A", "a"}) {
        lap.addChannel(channelOf({}), name);
        lap.addCalculatedChannel(channelOf({}), QString(name) + "2");
    }
    EXPECT_EQ(lap.getAvailableRecordedChannels(), QStringList({"A", "a", "b"}));
    EXPECT_EQ(lap.getAvailableCalculatedChannels(), QStringList({"A2", "a2", "b2"}));
    EXPECT_EQ(lap.channels().keys(), QStringList({"A", "a", "b"}));
}

TEST(Lap, IsAsLongAsItsFirstRecordedChannel) {
    Lap lap;
    lap.addCalculatedChannel(channelOf({1, 2, 3}), "a");
    lap.addChannel(channelOf({1}), "c");
    lap.addChannel(channelOf({1, 2}), "b");
    EXPECT_EQ(lap.size(), 2);
}

TEST(Lap, IsAsLongAsItsFirstCalculatedChannelIfNoneIsRecorded) {
    Lap lap;
    lap.addCalculatedChannel(channelOf({1}), "b");
    lap.addCalculatedChannel(channelOf({1, 2, 3}), "a");
    EXPECT_EQ(lap.size(), 3);
}

TEST(Lap, IsEmptyWithoutChannelsEvenIfItHasValues) {
    Lap lap;
    lap.setValue("Weather", "wet", QString());
    EXPECT_TRUE(lap.isEmpty());
    lap.addCalculatedChannel(channelOf({}), "a");
    EXPECT_FALSE(lap.isEmpty());
    lap.removeCalculatedChannel("a");
    lap.addChannel(channelOf({}), "a");
    EXPECT_FALSE(lap.isEmpty());
}

TEST(Lap, ClearEmptiesChannelsAndValuesAndKeepsTheHeader) {
    Lap lap;
    lap.addChannel(channelOf({1}), "a");
    lap.addCalculatedChannel(channelOf({1}), "b");
    lap.setValue("Weather", "wet", QString());
    lap.setLapTime(QTime(0, 1, 30));
    lap.setDriverName("Zoe");
    lap.clear();
    EXPECT_TRUE(lap.isEmpty());
    EXPECT_TRUE(lap.values().isEmpty());
    EXPECT_EQ(lap.lapTime(), QTime(0, 1, 30));
    EXPECT_EQ(lap.driverName(), "Zoe");
}

TEST(Lap, KeepsTheMapThatItReturnedUpToDateAlsoAfterClear) {
    Sample sample;
    sample.setValue("a", 1, QString());
    Lap lap;
    const Lap::ChannelMap& channels = lap.channels();
    lap.clear();
    for (int i = 1; i <= 3; ++i) {
        lap.addSample(sample);
        ASSERT_EQ(channels["a"]->samples.size(), i);
    }
}

TEST(Lap, GivesOneValueAndAllValues) {
    Lap lap;
    lap.setValue("Track length", 5.1, "km");
    EXPECT_EQ(lap.value("Track length").value.toDouble(), 5.1);
    EXPECT_EQ(lap.value("Track length").unit(), "km");
    EXPECT_EQ(lap.values().valueNameList(), QStringList({"Track length"}));
    EXPECT_FALSE(lap.value("absent").value.isValid());
}

TEST(Lap, GivesTheHeadersLapTimeUnderItsName) {
    Lap lap;
    lap.setLapTime(QTime(0, 1, 23, 456));
    const Value lapTime = lap.value("Lap time");
    EXPECT_EQ(lapTime.value.typeId(), QMetaType::QTime);
    EXPECT_EQ(lapTime.value.toTime(), QTime(0, 1, 23, 456));
    EXPECT_TRUE(lapTime.unit().isEmpty());
    EXPECT_FALSE(lap.value("lap time").value.isValid());
    EXPECT_FALSE(lap.values().containsValue("Lap time"));
}

TEST(Lap, PrefersALapValueNamedLapTime) {
    Lap lap;
    lap.setLapTime(QTime(0, 1, 23, 456));
    lap.setValue("Lap time", 83.456, "s");
    EXPECT_EQ(lap.value("Lap time").value.toDouble(), 83.456);
    EXPECT_EQ(lap.value("Lap time").unit(), "s");
}
