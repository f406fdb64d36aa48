#include "sdk/carinfo.h"

#include "tests/sdk/streams.h"
#include "tests/support/printqt.h"

#include <QVariant>

#include <gtest/gtest.h>

#include <new>

using TLM::SDK::CarInfo;
using TLM::SDK::CarStatus;

// Reading it fails as for a value that is too large for the memory.
struct TooLargeToRead {};

inline QDataStream& operator<<(QDataStream& stream, const TooLargeToRead&) {
    return stream;
}
[[noreturn]] inline QDataStream& operator>>(QDataStream&, TooLargeToRead&) {
    throw std::bad_alloc();
}

TEST(CarInfo, StartsWithEmptyTextsUndefinedStatusAndDetailedTelemetry) {
    const CarInfo car;
    EXPECT_TRUE(car.carId().isEmpty());
    EXPECT_TRUE(car.trackName().isEmpty());
    EXPECT_TRUE(car.trackConfig().isEmpty());
    EXPECT_TRUE(car.source().isEmpty());
    EXPECT_TRUE(car.carName().isEmpty());
    EXPECT_TRUE(car.className().isEmpty());
    EXPECT_TRUE(car.driverName().isEmpty());
    EXPECT_TRUE(car.teamName().isEmpty());
    EXPECT_EQ(car.status(), CarStatus::Undefined);
    EXPECT_TRUE(car.detailedTelemetry());
}

TEST(CarInfo, GivesBackWhatWasSet) {
    const CarInfo car = filledCar();
    EXPECT_EQ(car.carId(), "7");
    EXPECT_EQ(car.trackName(), "Ring");
    EXPECT_EQ(car.trackConfig(), "Full");
    EXPECT_EQ(car.source(), "Sim");
    EXPECT_EQ(car.carName(), "GT3");
    EXPECT_EQ(car.className(), "GT");
    EXPECT_EQ(car.driverName(), QString::fromUtf8("Zo\xC3\xAB"));
    EXPECT_EQ(car.teamName(), "Red");
    EXPECT_EQ(car.status(), CarStatus::FlyingLap);
    EXPECT_FALSE(car.detailedTelemetry());
}

TEST(CarInfoStream, WritesAMapOfTenVariantsInKeyOrder) {
    EXPECT_EQ(written(filledCar()).toHex(), filledCarBytes().toHex());
}

TEST(CarInfoStream, WritesTextsThatWereNeverSetAsNullTexts) {
    const QByteArray expected = WireBytes()
                                    .u32(10)
                                    .nullTextVariant("carId")
                                    .nullTextVariant("carName")
                                    .nullTextVariant("className")
                                    .boolVariant("detailedTelemetry", true)
                                    .nullTextVariant("driverName")
                                    .nullTextVariant("sourceName")
                                    .intVariant("status", -1)
                                    .nullTextVariant("teamName")
                                    .nullTextVariant("trackConfig")
                                    .nullTextVariant("trackName")
                                    .bytes();
    EXPECT_EQ(written(CarInfo()).toHex(), expected.toHex());
}

TEST(CarInfoStream, ReadsBackEveryField) {
    CarInfo read;
    EXPECT_EQ(readInto(filledCarBytes(), read), QDataStream::Ok);
    EXPECT_TRUE(sameFields(read, filledCar()));
}

TEST(CarInfoStream, KeepsTheDefaultsAndTheWrittenStatus) {
    CarInfo car;
    car.setStatus(CarStatus::InPitStall);
    CarInfo read = filledCar();
    EXPECT_EQ(readInto(written(car), read), QDataStream::Ok);
    EXPECT_TRUE(sameFields(read, car));
    EXPECT_TRUE(read.detailedTelemetry());
}

// A record of an older writer lacks keys. They read as "not detailed" and "not connected", although
// a new record starts with other values.
TEST(CarInfoStream, ReadsAnEmptyMapAsEmptyTextsNoTelemetryAndStatusZero) {
    CarInfo read = filledCar();
    EXPECT_EQ(readInto(WireBytes().u32(0).bytes(), read), QDataStream::Ok);
    EXPECT_TRUE(sameFields(read, emptyMapCar()));
}

TEST(CarInfoStream, ResetsTheFieldsWhoseKeysAreMissing) {
    CarInfo read = filledCar();
    EXPECT_EQ(readInto(WireBytes().u32(1).textVariant("carName", "LMP").bytes(), read),
              QDataStream::Ok);
    CarInfo expected = emptyMapCar();
    expected.setCarName("LMP");
    EXPECT_TRUE(sameFields(read, expected));
}

TEST(CarInfoStream, IgnoresUnknownKeys) {
    const QByteArray bytes = WireBytes()
                                 .u32(3)
                                 .textVariant("carId", "3")
                                 .textVariant("colour", "blue")
                                 .textVariant("source", "not this key")
                                 .bytes();
    CarInfo read;
    EXPECT_EQ(readInto(bytes, read), QDataStream::Ok);
    EXPECT_EQ(read.carId(), "3");
    EXPECT_TRUE(read.source().isEmpty());
    EXPECT_EQ(written(read).indexOf("blue"), -1);
}

TEST(CarInfoStream, ConvertsVariantsOfOtherTypes) {
    const QByteArray bytes = WireBytes()
                                 .u32(3)
                                 .intVariant("carId", 12)
                                 .textVariant("detailedTelemetry", "true")
                                 .textVariant("status", "4")
                                 .bytes();
    CarInfo read;
    EXPECT_EQ(readInto(bytes, read), QDataStream::Ok);
    EXPECT_EQ(read.carId(), "12");
    EXPECT_TRUE(read.detailedTelemetry());
    EXPECT_EQ(read.status(), CarStatus::InPitlane);
}

TEST(CarInfoStream, TakesAStatusNumberAsItIs) {
    CarInfo read;
    EXPECT_EQ(readInto(WireBytes().u32(1).intVariant("status", 1000).bytes(), read),
              QDataStream::Ok);
    EXPECT_EQ(static_cast<int>(read.status()), 1000);
}

TEST(CarInfoStream, ResetsEveryFieldWhenCutOffAtAnyByte) {
    EXPECT_TRUE(isResetByEveryCut(filledCar()));
}

TEST(CarInfoStream, SurvivesEverySingleChangedByte) {
    const QuietQt quiet;
    forEveryChangedByte(filledCarBytes(), [](const QByteArray& changed) {
        CarInfo read = filledCar();
        if (readInto(changed, read) != QDataStream::Ok) {
            ASSERT_TRUE(sameFields(read, emptyMapCar())) << changed.toHex().toStdString();
        }
    });
}

// Damaged bytes can announce a nested value that is too large for the memory.
TEST(CarInfoStream, ReportsANestedValueWithoutMemoryByItsStatus) {
    qRegisterMetaType<TooLargeToRead>();
    constexpr quint32 kUserType = 65536;
    constexpr char kTypeName[] = "TooLargeToRead";
    WireBytes bytes;
    bytes.u32(1).text("carId").u32(kUserType).u8(0).u32(sizeof(kTypeName));
    bytes.append(QByteArray(kTypeName, sizeof(kTypeName)));
    CarInfo read = filledCar();
    QDataStream::Status status = QDataStream::Ok;
    EXPECT_NO_THROW(status = readInto(bytes.bytes(), read));
    EXPECT_EQ(status, QDataStream::ReadCorruptData);
    EXPECT_TRUE(sameFields(read, emptyMapCar()));
}

TEST(CarInfoStream, KeepsAnEarlierFailureOfTheStream) {
    const QByteArray bytes = filledCarBytes();
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_0);
    stream.setStatus(QDataStream::ReadCorruptData);
    CarInfo read;
    stream >> read;
    EXPECT_EQ(stream.status(), QDataStream::ReadCorruptData);
    EXPECT_TRUE(sameFields(read, filledCar()));
}
