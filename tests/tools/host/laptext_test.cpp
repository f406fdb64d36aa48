#include "tools/host/laptext.h"

#include "sdk/channel.h"

#include <QSharedPointer>

#include <gtest/gtest.h>

namespace {

using namespace rataip::host;
using TLM::SDK::Channel;
using TLM::SDK::Lap;
using TLM::SDK::LapType;

TEST(LapTimeText, ShowsMinutesSecondsAndMilliseconds) {
    EXPECT_EQ(lapTimeText(QTime(0, 1, 23, 456)), QStringLiteral("1:23.456"));
    EXPECT_EQ(lapTimeText(QTime(0, 0, 7, 5)), QStringLiteral("0:07.005"));
    EXPECT_EQ(lapTimeText(QTime(0, 12, 0, 0)), QStringLiteral("12:00.000"));
}

TEST(LapTimeText, ShowsTheHourOnlyWhereThereIsOne) {
    EXPECT_EQ(lapTimeText(QTime(1, 2, 3, 4)), QStringLiteral("1:02:03.004"));
}

TEST(LapTimeText, SaysSoWhenThereIsNoTime) {
    EXPECT_EQ(lapTimeText(QTime()), QStringLiteral("no time"));
    EXPECT_EQ(lapTimeText(QTime(0, 59, 59)), QStringLiteral("no time"));
}

TEST(LapTimeText, ShowsATimeNextToTheMarkerOfNoTime) {
    EXPECT_EQ(lapTimeText(QTime(0, 59, 59, 1)), QStringLiteral("59:59.001"));
}

TEST(LapTypeText, NamesEveryType) {
    EXPECT_EQ(lapTypeText(LapType::OutLap), QStringLiteral("out"));
    EXPECT_EQ(lapTypeText(LapType::FlyingLap), QStringLiteral("flying"));
    EXPECT_EQ(lapTypeText(LapType::Unknown), QStringLiteral("unknown"));
}

TEST(LapTypeText, ShowsAnInvalidTypeAsUnknown) {
    EXPECT_EQ(lapTypeText(static_cast<LapType>(7)), QStringLiteral("unknown"));
}

TEST(CompletionText, SaysWhetherALapWasCompleted) {
    EXPECT_EQ(completionText(true), QStringLiteral("completed"));
    EXPECT_EQ(completionText(false), QStringLiteral("not completed"));
}

TEST(ChannelCount, AddsRecordedAndCalculatedChannels) {
    Lap lap;
    EXPECT_EQ(channelCount(lap), 0);
    lap.addChannel(QSharedPointer<Channel>::create(), QStringLiteral("speed"));
    lap.addChannel(QSharedPointer<Channel>::create(), QStringLiteral("gear"));
    lap.addCalculatedChannel(QSharedPointer<Channel>::create(), QStringLiteral("speed"));
    EXPECT_EQ(channelCount(lap), 3);
}

}  // namespace
