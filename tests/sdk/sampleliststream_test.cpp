#include "sdk/sample.h"
#include "tests/sdk/streams.h"
#include "tests/support/printqt.h"

#include <QBuffer>
#include <QMetaType>

#include <gtest/gtest.h>

using TLM::SDK::CarInfo;
using TLM::SDK::Sample;

namespace {

QList<Sample> cars(std::initializer_list<const char*> ids) {
    QList<Sample> samples;
    for (const char* id : ids) {
        Sample sample;
        static_cast<CarInfo&>(sample) = filledCar(id);
        sample.setValue("speed", 1.0, "m/s");
        samples.append(sample);
    }
    return samples;
}

QByteArray bytesOf(std::initializer_list<const char*> ids) {
    WireBytes bytes;
    bytes.u32(static_cast<quint32>(ids.size()));
    for (const char* id : ids) {
        bytes.append(filledCarBytes(id));
    }
    return bytes.bytes();
}

}  // namespace

TEST(SampleListStream, WritesACountAndThatManyCarRecords) {
    EXPECT_EQ(written(cars({"0", "1"})).toHex(), bytesOf({"0", "1"}).toHex());
    EXPECT_EQ(written(QList<Sample>()).toHex(), "00000000");
}

TEST(SampleListStream, ReadsTheCarsInOrderWithoutValues) {
    QList<Sample> read = cars({"9"});
    EXPECT_EQ(readInto(bytesOf({"0", "1", "2"}), read), QDataStream::Ok);
    ASSERT_EQ(read.size(), 3);
    EXPECT_TRUE(sameFields(read[0], filledCar("0")));
    EXPECT_TRUE(sameFields(read[2], filledCar("2")));
    EXPECT_TRUE(read[2].isEmpty());
}

TEST(SampleListStream, ReadsACountOfZeroAsAnEmptyList) {
    QList<Sample> read = cars({"9"});
    EXPECT_EQ(readInto(WireBytes().u32(0).bytes(), read), QDataStream::Ok);
    EXPECT_TRUE(read.isEmpty());
}

TEST(SampleListStream, IsEmptyAndFailedWhenCutOffAtAnyByte) {
    const QByteArray whole = bytesOf({"0", "1"});
    for (qsizetype length = 0; length < whole.size(); ++length) {
        QList<Sample> read = cars({"9"});
        EXPECT_EQ(readInto(whole.first(length), read), QDataStream::ReadPastEnd) << length;
        EXPECT_TRUE(read.isEmpty()) << length;
    }
}

TEST(SampleListStream, SurvivesEverySingleChangedByte) {
    const QuietQt quiet;
    forEveryChangedByte(bytesOf({"0"}), [](const QByteArray& changed) {
        QList<Sample> read;
        if (readInto(changed, read) != QDataStream::Ok) {
            ASSERT_TRUE(read.isEmpty()) << changed.toHex().toStdString();
        }
    });
}

TEST(SampleListStream, ReservesNoMemoryForAHugeCount) {
    for (const quint32 count : {1'000'000U, 0xFFFFFFFFU}) {
        const QByteArray bytes = WireBytes().u32(count).append(filledCarBytes()).bytes();
        QList<Sample> read;
        QDataStream::Status status = QDataStream::Ok;
        EXPECT_NO_THROW(status = readInto(bytes, read));
        EXPECT_NE(status, QDataStream::Ok);
        EXPECT_TRUE(read.isEmpty());
        EXPECT_LT(read.capacity(), 1000) << count;
    }
}

TEST(SampleListStream, ReadsMoreSamplesThanItReservesAtFirst) {
    constexpr quint32 kCount = 1000;
    WireBytes bytes;
    bytes.u32(kCount);
    for (quint32 i = 0; i < kCount; ++i) {
        bytes.u32(1).textVariant("carId", QString::number(i));
    }
    QList<Sample> read;
    EXPECT_EQ(readInto(bytes.bytes(), read), QDataStream::Ok);
    ASSERT_EQ(read.size(), kCount);
    EXPECT_EQ(read.last().carId(), "999");
}

TEST(SampleListStream, LoadsThroughTheMetaTypeWithTheSameReader) {
    const QMetaType type = QMetaType::fromType<QList<Sample>>();
    EXPECT_STREQ(type.name(), "QList<TLM::SDK::Sample>");
    const QByteArray bytes = WireBytes().u32(1'000'000).append(filledCarBytes()).bytes();
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_0);
    QList<Sample> read;
    EXPECT_NO_THROW(type.load(stream, &read));
    EXPECT_NE(stream.status(), QDataStream::Ok);
    EXPECT_LT(read.capacity(), 1000);
}

TEST(SampleListStream, ReadsTheListAndKeepsAnEarlierFailure) {
    const QByteArray bytes = bytesOf({"0"});
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_0);
    stream.setStatus(QDataStream::ReadCorruptData);
    QList<Sample> read;
    stream >> read;
    EXPECT_EQ(read.size(), 1);
    EXPECT_EQ(stream.status(), QDataStream::ReadCorruptData);
}

TEST(SampleListStream, DoesNotReviveAStreamThatFailedWithinATransaction) {
    QByteArray bytes = bytesOf({"0"});
    QBuffer buffer(&bytes);
    ASSERT_TRUE(buffer.open(QIODevice::ReadOnly));
    QDataStream stream(&buffer);
    stream.setVersion(QDataStream::Qt_6_0);
    stream.startTransaction();
    stream.setStatus(QDataStream::ReadPastEnd);
    QList<Sample> read = cars({"9"});
    stream >> read;
    EXPECT_EQ(stream.status(), QDataStream::ReadPastEnd);
    EXPECT_TRUE(read.isEmpty());
    stream.rollbackTransaction();
}
