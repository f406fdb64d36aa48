#include "tools/viewer/livelap.h"

#include "tests/tools/laps/samplelap.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using rataip::viewer::LiveLap;
using TLM::SDK::DynamicData;

constexpr std::size_t kSpeed = 0;
constexpr std::size_t kThrottle = 1;
constexpr std::size_t kGear = 3;

DynamicData tick(double share, double metresPerSecond = 10.0) {
    DynamicData values;
    values.setValue(QStringLiteral("lapdistpct"), share, {});
    values.setValue(QStringLiteral("speed"), metresPerSecond, QStringLiteral("m/s"));
    values.setValue(QStringLiteral("throttle"), 0.5, QStringLiteral("%"));
    return values;
}

TEST(LiveLap, CollectsTheTracesOverTheShareOfTheLapInPercent) {
    LiveLap lap;
    lap.add(tick(0.25, 10.0));
    lap.add(tick(0.5, 20.0));
    EXPECT_EQ(lap.current()[kSpeed], (QList<QPointF>{{25.0, 36.0}, {50.0, 72.0}}));
    EXPECT_EQ(lap.current()[kThrottle], (QList<QPointF>{{25.0, 50.0}, {50.0, 50.0}}));
    EXPECT_EQ(lap.unit(kSpeed), QStringLiteral("km/h"));
    EXPECT_TRUE(lap.current()[kGear].isEmpty());
}

TEST(LiveLap, DoesNotGrowWhileTheCarStands) {
    LiveLap lap;
    lap.add(tick(0.25, 10.0));
    for (int i = 0; i < 10'000; ++i) {
        lap.add(tick(0.5, i == 5000 ? 20.0 : i == 6000 ? 0.0 : 10.0 + 0.001 * (i % 2)));
    }
    ASSERT_EQ(lap.current()[kSpeed].size(), 5);
    EXPECT_EQ(lap.current()[kThrottle].size(), 5);
    QList<double> readings;
    for (const QPointF& point : lap.current()[kSpeed].mid(1)) {
        EXPECT_EQ(point.x(), 50.0);
        readings.append(point.y());
    }
    EXPECT_EQ(readings.constFirst(), 36.0) << "continues the line";
    EXPECT_EQ(*std::min_element(readings.cbegin(), readings.cend()), 0.0);
    EXPECT_EQ(*std::max_element(readings.cbegin(), readings.cend()), 72.0);
    lap.add(tick(0.5, 15.0));
    EXPECT_EQ(lap.current()[kSpeed].constLast(), QPointF(50.0, 54.0)) << "the newest is shown";
    lap.add(tick(0.75, 10.0));
    EXPECT_EQ(lap.current()[kSpeed].size(), 6) << "it drives on";
}

TEST(LiveLap, BeginsANewLapWhenTheShareFallsByMoreThanHalf) {
    LiveLap lap;
    lap.add(tick(0.99));
    lap.add(tick(0.01));
    EXPECT_EQ(lap.current()[kSpeed].size(), 1);
}

TEST(LiveLap, ContinuesWhenTheCarIsResetByALittle) {
    LiveLap lap;
    lap.add(tick(0.6));
    lap.add(tick(0.2));
    EXPECT_EQ(lap.current()[kSpeed].size(), 2);
}

TEST(LiveLap, IgnoresTicksWithoutAPosition) {
    LiveLap lap;
    lap.add(tick(-1.0));
    lap.add(tick(kMissing));
    lap.add(DynamicData());
    EXPECT_TRUE(lap.current()[kSpeed].isEmpty());
}

TEST(LiveLap, IgnoresMissingReadings) {
    LiveLap lap;
    lap.add(tick(0.5, kMissing));
    EXPECT_TRUE(lap.current()[kSpeed].isEmpty());
    EXPECT_EQ(lap.current()[kThrottle].size(), 1);
}

TEST(LiveLap, TakesTheOwnCarsFlyingLapAsThePreviousOne) {
    LiveLap lap;
    const auto finished = ownLap(4, 10);
    lap.addFinished(*finished);
    EXPECT_EQ(lap.previousRevision(), 1);
    ASSERT_EQ(lap.previous()[kSpeed].size(), 10);
    for (int i = 0; i < 10; ++i) {
        EXPECT_DOUBLE_EQ(lap.previous()[kSpeed].at(i).x(),
                         100.0 * finished->channel(QStringLiteral("lapdistpct"))->sample(i));
        EXPECT_DOUBLE_EQ(lap.previous()[kSpeed].at(i).y(),
                         3.6 * finished->channel(QStringLiteral("speed"))->sample(i));
    }
}

TEST(LiveLap, KeepsThePreviousLapWhenAnotherKindOfLapEnds) {
    LiveLap lap;
    lap.addFinished(*otherLap());
    const auto aborted = ownLap();
    aborted->setCompleted(false);
    lap.addFinished(*aborted);
    const auto outLap = ownLap();
    outLap->setLapType(TLM::SDK::LapType::OutLap);
    lap.addFinished(*outLap);
    EXPECT_EQ(lap.previousRevision(), 0);
    EXPECT_TRUE(lap.previous()[kSpeed].isEmpty());
}

TEST(LiveLap, HasNoCurveWhereThePreviousLapLacksTheChannel) {
    LiveLap lap;
    const auto finished = ownLap();
    finished->removeChannel(QStringLiteral("gear"));
    lap.addFinished(*ownLap());
    lap.addFinished(*finished);
    EXPECT_TRUE(lap.previous()[kGear].isEmpty());
    finished->removeChannel(QStringLiteral("lapdistpct"));
    lap.addFinished(*finished);
    EXPECT_TRUE(lap.previous()[kSpeed].isEmpty());
}

TEST(LiveLap, StartsAgainWithANewConnection) {
    LiveLap lap;
    lap.add(tick(0.9));
    lap.addFinished(*ownLap());
    lap.restart();
    EXPECT_TRUE(lap.current()[kSpeed].isEmpty());
    EXPECT_FALSE(lap.previous()[kSpeed].isEmpty());
}

}  // namespace
