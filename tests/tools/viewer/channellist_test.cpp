#include "tools/viewer/channellist.h"

#include "tests/tools/laps/samplelap.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

using rataip::viewer::ChannelList;
using rataip::viewer::ChannelName;
using rataip::viewer::channelOf;
using TLM::SDK::Lap;

Lap lapWithBothKinds() {
    Lap lap;
    lap.addChannel(channelWith({1.0}, QStringLiteral("m/s")), QStringLiteral("speed"));
    lap.addChannel(channelWith({2.0}), QStringLiteral("gear"));
    lap.addCalculatedChannel(channelWith({3.0}, QStringLiteral("s")), QStringLiteral("speed"));
    return lap;
}

TEST(ChannelList, KeepsRecordedAndCalculatedChannelsApart) {
    const ChannelList channels(lapWithBothKinds());
    ASSERT_EQ(channels.rowCount(), 2);
    EXPECT_EQ(channels.item(0)->text(), QStringLiteral("Recorded (2)"));
    EXPECT_EQ(channels.item(1)->text(), QStringLiteral("Calculated (1)"));
    EXPECT_EQ(channels.item(0)->child(1, 0)->text(), QStringLiteral("speed"));
    EXPECT_EQ(channels.item(0)->child(1, 1)->text(), QStringLiteral("m/s"));
    EXPECT_EQ(channels.item(1)->child(0, 1)->text(), QStringLiteral("s"));
}

TEST(ChannelList, ListsTickedChannelsInTheOrderOfTicking) {
    ChannelList channels(lapWithBothKinds());
    QSignalSpy changes(&channels, &ChannelList::chosenChanged);
    channels.choose({QStringLiteral("speed"), true}, true);
    channels.choose({QStringLiteral("gear"), false}, true);
    channels.choose({QStringLiteral("gear"), false}, true);
    EXPECT_EQ(channels.chosen(), (QList<ChannelName>{{QStringLiteral("speed"), true},
                                                     {QStringLiteral("gear"), false}}));
    EXPECT_EQ(changes.size(), 2);
    channels.choose({QStringLiteral("speed"), true}, false);
    EXPECT_EQ(channels.chosen(), (QList<ChannelName>{{QStringLiteral("gear"), false}}));
}

TEST(ChannelList, TicksManyChannelsWithOneSignal) {
    ChannelList channels(lapWithBothKinds());
    channels.choose({QStringLiteral("gear"), false}, true);
    QSignalSpy changes(&channels, &ChannelList::chosenChanged);
    const QList<ChannelName> names = {{QStringLiteral("speed"), true},
                                      {QStringLiteral("absent"), false},
                                      {QStringLiteral("speed"), false}};
    channels.chooseOnly(names);
    EXPECT_EQ(channels.chosen(), (QList<ChannelName>{names.at(0), names.at(2)}));
    EXPECT_EQ(changes.size(), 1);
    channels.chooseOnly({names.at(0), names.at(2)});
    EXPECT_EQ(changes.size(), 1) << "nothing changed";
    channels.choose({QStringLiteral("gear"), false}, true);
    EXPECT_EQ(changes.size(), 2);
}

TEST(ChannelList, IgnoresAChannelThatTheLapLacks) {
    ChannelList channels(lapWithBothKinds());
    channels.choose({QStringLiteral("absent"), false}, true);
    channels.choose({QStringLiteral("gear"), true}, true);
    EXPECT_TRUE(channels.chosen().isEmpty());
}

TEST(ChannelList, FindsChannelsByNameAndKind) {
    Lap lap = lapWithBothKinds();
    EXPECT_EQ(channelOf(lap, {QStringLiteral("speed"), false})->sample(0), 1.0);
    EXPECT_EQ(channelOf(lap, {QStringLiteral("speed"), true})->sample(0), 3.0);
    EXPECT_TRUE(channelOf(lap, {QStringLiteral("gear"), true}).isNull());
}

}  // namespace
