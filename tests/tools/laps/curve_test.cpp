#include "tools/laps/curve.h"

#include "tests/tools/laps/samplelap.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using rataip::laps::Axis;
using rataip::laps::axisOf;
using rataip::laps::AxisValues;
using rataip::laps::curveOf;
using rataip::laps::thinned;
using TLM::SDK::Lap;

TEST(LapAxis, TakesTheDistanceChannelAsItIs) {
    const auto lap = ownLap();
    const AxisValues axis = axisOf(*lap, Axis::Distance);
    EXPECT_EQ(axis.values, lap->channel(QStringLiteral("lapdist"))->samples);
    EXPECT_EQ(axis.unit, QStringLiteral("m"));
    EXPECT_EQ(axis.name, QStringLiteral("Distance"));
}

TEST(LapAxis, MultipliesTheShareByTheTracksLengthWithoutADistanceChannel) {
    Lap lap;
    lap.setValue(QStringLiteral("Track length"), 2.5, QStringLiteral("km"));
    lap.addChannel(channelWith({0.0, kMissing, 0.5}), QStringLiteral("lapdistpct"));
    const AxisValues axis = axisOf(lap, Axis::Distance);
    EXPECT_EQ(axis.values, (QList<double>{0.0, kMissing, 1250.0}));
    EXPECT_EQ(axis.unit, QStringLiteral("m"));
}

TEST(LapAxis, GivesTheShareInPercentWhereTheTracksLengthIsNotKnown) {
    Lap lap;
    lap.addChannel(channelWith({0.0, 0.5}), QStringLiteral("lapdistpct"));
    for (const QVariant& length : {QVariant(), QVariant(0.0), QVariant(QStringLiteral("long"))}) {
        lap.setValue(QStringLiteral("Track length"), length, {});
        const AxisValues axis = axisOf(lap, Axis::Distance);
        EXPECT_EQ(axis.values, (QList<double>{0.0, 50.0}));
        EXPECT_EQ(axis.unit, QStringLiteral("%"));
    }
}

TEST(LapAxis, CountsTimeFromTheFirstReading) {
    Lap lap;
    lap.addChannel(channelWith({kMissing, 7.0, 9.5}, QStringLiteral("s")),
                   QStringLiteral("sessiontime"));
    const AxisValues axis = axisOf(lap, Axis::Time);
    EXPECT_EQ(axis.values, (QList<double>{kMissing, 0.0, 2.5}));
    EXPECT_EQ(axis.unit, QStringLiteral("s"));
}

TEST(LapAxis, HasNoValuesWithoutAChannelForIt) {
    const Lap lap;
    EXPECT_TRUE(axisOf(lap, Axis::Distance).values.isEmpty());
    EXPECT_TRUE(axisOf(lap, Axis::Time).values.isEmpty());
}

TEST(LapAxis, KeepsAClockWithoutAnyReading) {
    Lap lap;
    lap.addChannel(channelWith({kMissing, kMissing}), QStringLiteral("sessiontime"));
    EXPECT_EQ(axisOf(lap, Axis::Time).values, (QList<double>{kMissing, kMissing}));
}

TEST(LapCurve, LeavesOutSamplesMissingOnEitherAxis) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    const auto channel = channelWith({1.0, kMissing, 3.0, kNan, -kInfinite, 6.0, 7.0, 8.0});
    const AxisValues axis{{0.0, 1.0, 2.0, 3.0, 4.0, kMissing, 6.0}, {}, {}};
    EXPECT_EQ(curveOf(*channel, axis), (QList<QPointF>{{0.0, 1.0}, {2.0, 3.0}, {6.0, 7.0}}));
}

TEST(LapCurve, IsEmptyWithoutAnAxis) {
    EXPECT_TRUE(curveOf(*channelWith({1.0}), AxisValues()).isEmpty());
}

QList<QPointF> zigzag(int size) {
    QList<QPointF> curve;
    for (int i = 0; i < size; ++i) {
        curve.append({static_cast<double>(i), i % 7 == 3 ? 100.0 : static_cast<double>(-(i % 5))});
    }
    return curve;
}

TEST(ThinnedCurve, IsUnchangedWhileShort) {
    EXPECT_EQ(thinned(zigzag(42), 20), zigzag(42));
    EXPECT_TRUE(thinned({}, 20).isEmpty());
}

TEST(ThinnedCurve, KeepsOnlyPointsOfTheCurveInTheirOrder) {
    const QList<QPointF> curve = zigzag(5000);
    const QList<QPointF> thin = thinned(curve, 100);
    EXPECT_LE(thin.size(), 202);
    qsizetype from = 0;
    for (const QPointF& point : thin) {
        from = curve.indexOf(point, from);
        ASSERT_GE(from, 0);
        ++from;
    }
}

TEST(ThinnedCurve, KeepsBothEndsAndEverySpike) {
    QList<QPointF> curve;
    for (int i = 0; i < 5000; ++i) {
        curve.append({static_cast<double>(i), 0.0});
    }
    curve[1234].setY(9.0);
    curve[4321].setY(-9.0);
    const QList<QPointF> thin = thinned(curve, 50);
    EXPECT_EQ(thin.constFirst(), curve.constFirst());
    EXPECT_EQ(thin.constLast(), curve.constLast());
    EXPECT_TRUE(thin.contains(curve.at(1234)));
    EXPECT_TRUE(thin.contains(curve.at(4321)));
}

TEST(ThinnedCurve, TakesAWidthOfNothingAsOneColumn) {
    EXPECT_LE(thinned(zigzag(100), 0).size(), 4);
    EXPECT_LE(thinned(zigzag(100), -5).size(), 4);
}

}  // namespace
