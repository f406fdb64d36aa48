#include "sdk/lapheader.h"

#include "tests/sdk/streams.h"
#include "tests/support/printqt.h"

#include <QMetaType>

#include <gtest/gtest.h>

#include <type_traits>

using TLM::SDK::CarInfo;
using TLM::SDK::LapHeader;
using TLM::SDK::LapType;
using TLM::SDK::Session;

static_assert(std::is_same_v<std::underlying_type_t<Session>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<LapType>, std::int32_t>);
static_assert(static_cast<int>(Session::Unknown) == -1);
static_assert(static_cast<int>(Session::OfflineTesting) == 0);
static_assert(static_cast<int>(Session::Practice) == 1);
static_assert(static_cast<int>(Session::Qualify) == 2);
static_assert(static_cast<int>(Session::Warmup) == 3);
static_assert(static_cast<int>(Session::Race) == 5);
static_assert(static_cast<int>(LapType::Unknown) == -1);
static_assert(static_cast<int>(LapType::OutLap) == 0);
static_assert(static_cast<int>(LapType::FlyingLap) == 1);

TEST(LapHeader, StartsUnknown) {
    const LapHeader header;
    EXPECT_TRUE(header.dateTime().isNull());
    EXPECT_TRUE(header.fileName().isEmpty());
    EXPECT_TRUE(header.lapTime().isNull());
    EXPECT_FALSE(header.lapTime().isValid());
    EXPECT_TRUE(header.pluginName().isEmpty());
    EXPECT_TRUE(header.lapId().isNull());
    EXPECT_TRUE(header.stintId().isNull());
    EXPECT_TRUE(header.sessionId().isNull());
    EXPECT_EQ(header.lapInSession(), 0);
    EXPECT_EQ(header.lapInStint(), 0);
    EXPECT_EQ(header.stintInSession(), 0);
    EXPECT_EQ(header.session(), Session::Unknown);
    EXPECT_EQ(header.lapType(), LapType::Unknown);
    EXPECT_FALSE(header.completed());
    EXPECT_TRUE(header.isEmpty());
    EXPECT_TRUE(header.detailedTelemetry());
}

TEST(LapHeader, GivesBackWhatWasSet) {
    const QUuid lapId = QUuid::createUuid();
    const QUuid stintId = QUuid::createUuid();
    const QUuid sessionId = QUuid::createUuid();
    const QDateTime driven = QDateTime::fromMSecsSinceEpoch(1'700'000'000'000);
    LapHeader header;
    header.setDateTime(driven);
    header.setFileName("lap.csv");
    header.setLapTime(QTime(0, 1, 23, 456));
    header.setPlugin("Some plugin");
    header.setLapId(lapId);
    header.setStintId(stintId);
    header.setSessionId(sessionId);
    header.setLapInSession(11);
    header.setLapInStint(3);
    header.setStintInSession(2);
    header.setSession(Session::Race);
    header.setLapType(LapType::FlyingLap);
    header.setCompleted(true);
    EXPECT_EQ(header.dateTime(), driven);
    EXPECT_EQ(header.fileName(), "lap.csv");
    EXPECT_EQ(header.lapTime(), QTime(0, 1, 23, 456));
    EXPECT_EQ(header.pluginName(), "Some plugin");
    EXPECT_EQ(header.lapId(), lapId);
    EXPECT_EQ(header.stintId(), stintId);
    EXPECT_EQ(header.sessionId(), sessionId);
    EXPECT_EQ(header.lapInSession(), 11);
    EXPECT_EQ(header.lapInStint(), 3);
    EXPECT_EQ(header.stintInSession(), 2);
    EXPECT_EQ(header.session(), Session::Race);
    EXPECT_EQ(header.lapType(), LapType::FlyingLap);
    EXPECT_TRUE(header.completed());
}

TEST(LapHeaderStream, ContainsOnlyTheCarRecord) {
    LapHeader header;
    static_cast<CarInfo&>(header) = filledCar();
    header.setLapTime(QTime(0, 1, 23, 456));
    header.setLapId(QUuid::createUuid());
    header.setSessionId(QUuid::createUuid());
    header.setValue("Weather", "wet", QString());
    EXPECT_EQ(written(header).toHex(), filledCarBytes().toHex());

    LapHeader read;
    EXPECT_EQ(readInto(written(header), read), QDataStream::Ok);
    EXPECT_TRUE(sameFields(read, filledCar()));
    EXPECT_TRUE(read.lapTime().isNull());
    EXPECT_TRUE(read.lapId().isNull());
    EXPECT_TRUE(read.sessionId().isNull());
    EXPECT_TRUE(read.isEmpty());
}

TEST(LapHeaderStream, KeepsTheTargetsOwnFieldsAndValues) {
    LapHeader read;
    read.setLapTime(QTime(0, 2));
    read.setLapInSession(5);
    read.setValue("Weather", "dry", QString());
    EXPECT_EQ(readInto(filledCarBytes(), read), QDataStream::Ok);
    EXPECT_EQ(read.lapTime(), QTime(0, 2));
    EXPECT_EQ(read.lapInSession(), 5);
    EXPECT_TRUE(read.containsValue("Weather"));
    EXPECT_TRUE(sameFields(read, filledCar()));
}

TEST(LapHeaderStream, ResetsTheCarWhenCutOffAtAnyByte) {
    EXPECT_TRUE(isResetByEveryCut(LapHeader()));
}

TEST(LapHeaderStream, LoadsAndSavesThroughTheMetaType) {
    const QMetaType type = QMetaType::fromType<LapHeader>();
    EXPECT_STREQ(type.name(), "TLM::SDK::LapHeader");
    ASSERT_TRUE(type.hasRegisteredDataStreamOperators());
    const QByteArray bytes = filledCarBytes();
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_0);
    LapHeader read;
    EXPECT_TRUE(type.load(stream, &read));
    EXPECT_TRUE(sameFields(read, filledCar()));
}
