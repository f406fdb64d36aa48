#include "tools/host/carlist.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {

using rataip::host::CarList;
using TLM::SDK::CarInfo;
using TLM::SDK::CarStatus;
using TLM::SDK::LivePluginInfo;

CarInfo car(int id, const char* driver, CarStatus status = CarStatus::FlyingLap) {
    CarInfo info;
    info.setCarId(QString::number(id));
    info.setDriverName(QString::fromUtf8(driver));
    info.setStatus(status);
    return info;
}

LivePluginInfo listOf(std::initializer_list<CarInfo> cars) {
    LivePluginInfo info;
    info.cars = cars;
    return info;
}

TEST(CarListUpdate, ReportsTheNamedCarsOfTheFirstList) {
    CarList list;
    const QList<CarInfo> news = list.update(listOf({car(0, ""), car(1, "Ann"), car(2, "Bob")}));
    ASSERT_EQ(news.size(), 2);
    EXPECT_EQ(news.at(0).driverName(), QStringLiteral("Ann"));
    EXPECT_EQ(news.at(1).driverName(), QStringLiteral("Bob"));
    EXPECT_EQ(list.count(), 2);
}

TEST(CarListUpdate, KeepsTheOrderOfTheList) {
    CarList list;
    const QList<CarInfo> news = list.update(listOf({car(2, "Bob"), car(10, "Cid")}));
    ASSERT_EQ(news.size(), 2);
    EXPECT_EQ(news.at(0).carId(), QStringLiteral("2"));
    EXPECT_EQ(news.at(1).carId(), QStringLiteral("10"));
}

TEST(CarListUpdate, IgnoresANewStatus) {
    CarList list;
    list.update(listOf({car(1, "Ann", CarStatus::InPitStall)}));
    EXPECT_TRUE(list.update(listOf({car(1, "Ann", CarStatus::OutLap)})).isEmpty());
    EXPECT_EQ(list.countOnTrack(), 1);
}

TEST(CarListUpdate, ReportsOnlyTheCarThatJoined) {
    CarList list;
    list.update(listOf({car(1, "Ann"), car(2, "")}));
    const QList<CarInfo> news = list.update(listOf({car(1, "Ann"), car(2, "Bob")}));
    ASSERT_EQ(news.size(), 1);
    EXPECT_EQ(news.at(0).driverName(), QStringLiteral("Bob"));
}

TEST(CarListUpdate, ReportsANewDriverTeamCarAndClass) {
    CarList list;
    CarInfo info = car(1, "Ann");
    list.update(listOf({info}));
    info.setDriverName(QStringLiteral("Amy"));
    EXPECT_EQ(list.update(listOf({info})).size(), 1);
    info.setTeamName(QStringLiteral("Blue"));
    EXPECT_EQ(list.update(listOf({info})).size(), 1);
    info.setCarName(QStringLiteral("GT"));
    EXPECT_EQ(list.update(listOf({info})).size(), 1);
    info.setClassName(QStringLiteral("GT3"));
    EXPECT_EQ(list.update(listOf({info})).size(), 1);
    EXPECT_EQ(list.update(listOf({info})).size(), 0);
}

TEST(CarListUpdate, ForgetsACarThatLostItsName) {
    CarList list;
    list.update(listOf({car(1, "Ann"), car(2, "Bob")}));
    EXPECT_TRUE(list.update(listOf({car(1, "Ann"), car(2, "")})).isEmpty());
    EXPECT_EQ(list.count(), 1);
}

TEST(CarListUpdate, AcceptsAnEmptyList) {
    CarList list;
    EXPECT_TRUE(list.update({}).isEmpty());
    EXPECT_EQ(list.count(), 0);
}

TEST(CarListCounts, DistinguishTrackAndPits) {
    CarList list;
    list.update(listOf({car(0, "a", CarStatus::Undefined), car(1, "b", CarStatus::NotConnected),
                        car(2, "c", CarStatus::NotInWorld), car(3, "d", CarStatus::WaitingForStart),
                        car(4, "e", CarStatus::InPitStall), car(5, "f", CarStatus::InPitlane),
                        car(6, "g", CarStatus::OutLap), car(7, "h", CarStatus::FlyingLap),
                        car(8, "i", CarStatus::OnTrack), car(9, "j", CarStatus::OffTrack)}));
    EXPECT_EQ(list.count(), 10);
    EXPECT_EQ(list.countOnTrack(), 4);
    EXPECT_EQ(list.countInPits(), 2);
}

}  // namespace
