#include "tools/viewer/field.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using rataip::viewer::CarState;
using rataip::viewer::Field;
using TLM::SDK::CarInfo;
using TLM::SDK::LivePluginInfo;
using TLM::SDK::Sample;

LivePluginInfo carsNamed(const QStringList& drivers, int own = -1) {
    LivePluginInfo info;
    for (qsizetype slot = 0; slot < drivers.size(); ++slot) {
        CarInfo car;
        car.setCarId(QString::number(slot));
        car.setDriverName(drivers.at(slot));
        car.setDetailedTelemetry(slot == own);
        info.cars.append(car);
    }
    return info;
}

Sample at(double share, int lap) {
    Sample sample;
    sample.setValue(QStringLiteral("lapdistpct"), static_cast<float>(share), {});
    sample.setValue(QStringLiteral("lap"), lap, {});
    return sample;
}

QStringList byPosition(const Field& field) {
    QList<CarState> cars = field.cars();
    QStringList order;
    for (int position = 1; position <= cars.size(); ++position) {
        for (const CarState& car : cars) {
            if (car.position == position) {
                order.append(car.info.driverName());
            }
        }
    }
    return order;
}

TEST(ViewerField, HoldsTheCarsThatHaveADriver) {
    Field field;
    field.setCars(carsNamed({QStringLiteral("A"), {}, QStringLiteral("C")}));
    const QList<CarState> cars = field.cars();
    ASSERT_EQ(cars.size(), 2);
    EXPECT_EQ(cars.at(1).info.carId(), QStringLiteral("2"));
    EXPECT_FALSE(cars.at(0).isInWorld());
    EXPECT_FALSE(cars.at(0).position);
}

TEST(ViewerField, RanksByLapsAndShareOfTheLap) {
    Field field;
    field.setCars(carsNamed({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}));
    field.setSamples({at(0.9, 3), at(0.1, 4), at(0.2, 4)});
    EXPECT_EQ(byPosition(field),
              (QStringList{QStringLiteral("C"), QStringLiteral("B"), QStringLiteral("A")}));
}

TEST(ViewerField, KeepsACarInFrontThatHasJustCrossedTheLine) {
    Sample leader = at(0.01, 6);
    // This number changes some ticks after the line.
    leader.setValue(QStringLiteral("lapcompleted"), 4, {});
    Sample follower = at(0.98, 5);
    follower.setValue(QStringLiteral("lapcompleted"), 4, {});
    Field field;
    field.setCars(carsNamed({QStringLiteral("A"), QStringLiteral("B")}));
    field.setSamples({leader, follower});
    EXPECT_EQ(byPosition(field), (QStringList{QStringLiteral("A"), QStringLiteral("B")}));
}

TEST(ViewerField, GivesNoPositionToCarsThatAreNotInTheWorld) {
    Field field;
    field.setCars(carsNamed({QStringLiteral("A"), QStringLiteral("B")}));
    field.setSamples({at(-1.0, 30), at(0.2, 4)});
    EXPECT_EQ(byPosition(field), QStringList{QStringLiteral("B")});
    EXPECT_FALSE(field.cars().at(0).isInWorld());
}

TEST(ViewerField, TakesAShareSlightlyOutsideTheLapAsItsEnd) {
    Field field;
    field.setCars(carsNamed({QStringLiteral("A"), QStringLiteral("B")}));
    field.setSamples({at(-0.1, 0), at(1.2, 0)});
    EXPECT_EQ(field.cars().at(0).share, 0.0);
    EXPECT_EQ(field.cars().at(1).share, 1.0);
}

TEST(ViewerField, ReadsTheOwnCarsLastLapUnderItsOwnName) {
    Sample sample = at(0.5, 1);
    sample.setValue(QStringLiteral("laplastlaptime"), 81.5, {});
    sample.setValue(QStringLiteral("lastlaptime"), 90.5, {});
    Field field;
    field.setCars(carsNamed({QStringLiteral("A"), QStringLiteral("B")}, 1));
    field.setSamples({sample, sample});
    EXPECT_EQ(field.cars().at(0).lastLapSeconds, 90.5);
    EXPECT_EQ(field.cars().at(1).lastLapSeconds, 81.5);
    EXPECT_EQ(field.ownSlot(), 1);
}

TEST(ViewerField, IgnoresNumbersThatMakeNoSense) {
    Sample sample;
    sample.setValue(QStringLiteral("lapdistpct"), std::numeric_limits<double>::quiet_NaN(), {});
    sample.setValue(QStringLiteral("lap"), -1, {});
    sample.setValue(QStringLiteral("lastlaptime"), -1.0, {});
    Field field;
    field.setCars(carsNamed({QStringLiteral("A")}));
    field.setSamples({sample});
    const CarState car = field.cars().constFirst();
    EXPECT_FALSE(car.share);
    EXPECT_FALSE(car.lap);
    sample.setValue(QStringLiteral("lap"), 1e30, {});
    field.setSamples({sample});
    EXPECT_FALSE(field.cars().constFirst().lap);
    EXPECT_FALSE(car.lastLapSeconds);
}

TEST(ViewerField, IgnoresSamplesWithoutACarAndCarsWithoutASample) {
    Field field;
    field.setSamples({at(0.5, 0)});
    EXPECT_TRUE(field.cars().isEmpty());
    EXPECT_FALSE(field.ownSlot());
    field.setCars(carsNamed({QStringLiteral("A"), QStringLiteral("B")}));
    field.setSamples({at(0.5, 0)});
    EXPECT_TRUE(field.cars().at(0).isInWorld());
    EXPECT_FALSE(field.cars().at(1).isInWorld());
}

TEST(ViewerField, ForgetsPositionsButNotDrivers) {
    Field field;
    field.setCars(carsNamed({QStringLiteral("A")}));
    field.setSamples({at(0.5, 0)});
    field.clearSamples();
    ASSERT_EQ(field.cars().size(), 1);
    EXPECT_FALSE(field.cars().at(0).isInWorld());
    EXPECT_EQ(field.cars().at(0).info.status(), TLM::SDK::CarStatus::NotConnected);
}

}  // namespace
