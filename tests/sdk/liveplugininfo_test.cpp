#include "sdk/liveplugininfo.h"

#include "tests/sdk/streams.h"
#include "tests/support/printqt.h"

#include <gtest/gtest.h>

#include <algorithm>

using TLM::SDK::CarInfo;
using TLM::SDK::LivePluginInfo;

namespace {

LivePluginInfo filledInfo() {
    LivePluginInfo info;
    info.setPluginName("P");
    info.setSourceName("Src");
    info.cars = {filledCar("0"), filledCar("1"), filledCar("2")};
    return info;
}

QByteArray namesAndCount(qint32 count) {
    return WireBytes().text("Src").text("P").u32(static_cast<quint32>(count)).bytes();
}

// A reader creates as many cars as the count says, which can be too many for a test.
constexpr qint32 kAffordableCars = 1'000;

qint32 announcedCars(const QByteArray& bytes) {
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_0);
    QString name;
    qint32 count = 0;
    stream >> name >> name >> count;
    return count;
}

}  // namespace

TEST(LivePluginInfo, StartsEmpty) {
    const LivePluginInfo info;
    EXPECT_TRUE(info.cars.isEmpty());
    EXPECT_TRUE(info.pluginName().isEmpty());
    EXPECT_TRUE(info.sourceName().isEmpty());
}

// The names are streamed in the reverse order of the record's members.
TEST(LivePluginInfoStream, WritesSourceThenPluginThenCountThenCars) {
    const QByteArray expected = WireBytes()
                                    .append(namesAndCount(3))
                                    .append(filledCarBytes("0"))
                                    .append(filledCarBytes("1"))
                                    .append(filledCarBytes("2"))
                                    .bytes();
    EXPECT_EQ(written(filledInfo()).toHex(), expected.toHex());
}

TEST(LivePluginInfoStream, WritesAnEmptyInfoAsTwoNullTextsAndZero) {
    EXPECT_EQ(written(LivePluginInfo()).toHex(),
              WireBytes().nullText().nullText().u32(0).bytes().toHex());
}

TEST(LivePluginInfoStream, ReadsBackNamesAndCarsInOrder) {
    LivePluginInfo read;
    read.cars = {filledCar("old")};
    EXPECT_EQ(readInto(written(filledInfo()), read), QDataStream::Ok);
    EXPECT_EQ(read.pluginName(), "P");
    EXPECT_EQ(read.sourceName(), "Src");
    ASSERT_EQ(read.cars.size(), 3);
    EXPECT_TRUE(sameFields(read.cars[0], filledCar("0")));
    EXPECT_TRUE(sameFields(read.cars[1], filledCar("1")));
    EXPECT_TRUE(sameFields(read.cars[2], filledCar("2")));
}

TEST(LivePluginInfoStream, ReadsACountOfZeroOrBelowAsNoCars) {
    for (const qint32 count : {0, -1, std::numeric_limits<qint32>::min()}) {
        LivePluginInfo read;
        read.cars = {filledCar("old")};
        EXPECT_EQ(readInto(namesAndCount(count), read), QDataStream::Ok);
        EXPECT_TRUE(read.cars.isEmpty()) << count;
    }
}

TEST(LivePluginInfoStream, GivesAsManyCarsAsAnnouncedWhenCutOffAfterTheNames) {
    LivePluginInfo read;
    EXPECT_NE(readInto(namesAndCount(3), read), QDataStream::Ok);
    EXPECT_EQ(read.sourceName(), "Src");
    EXPECT_EQ(read.pluginName(), "P");
    ASSERT_EQ(read.cars.size(), 3);
    for (const CarInfo& car : read.cars) {
        EXPECT_TRUE(sameFields(car, emptyMapCar()));
    }
}

TEST(LivePluginInfoStream, KeepsTheCarsBeforeTheCutAndResetsTheOthers) {
    const QByteArray whole = written(filledInfo());
    const qsizetype carSize = filledCarBytes("0").size();
    const qsizetype firstCarAt = namesAndCount(3).size();
    for (qsizetype length = 0; length < whole.size(); ++length) {
        LivePluginInfo read;
        read.cars = {filledCar("old")};
        EXPECT_NE(readInto(whole.first(length), read), QDataStream::Ok) << length;
        if (length < firstCarAt) {
            EXPECT_TRUE(read.cars.isEmpty()) << length;
            continue;
        }
        ASSERT_EQ(read.cars.size(), 3) << length;
        const qsizetype complete = (length - firstCarAt) / carSize;
        for (qsizetype i = 0; i < 3; ++i) {
            const CarInfo expected = i < complete ? filledCar(QString::number(i)) : emptyMapCar();
            EXPECT_TRUE(sameFields(read.cars[i], expected)) << length << ' ' << i;
        }
    }
}

TEST(LivePluginInfoStream, SurvivesEverySingleChangedByte) {
    const QuietQt quiet;
    LivePluginInfo info = filledInfo();
    info.cars = {filledCar("0")};
    forEveryChangedByte(written(info), [](const QByteArray& changed) {
        const qint32 announced = announcedCars(changed);
        if (announced > kAffordableCars) {
            return;
        }
        LivePluginInfo read;
        const QDataStream::Status status = readInto(changed, read);
        EXPECT_EQ(read.cars.size(), std::max(announced, 0));
        if (status != QDataStream::Ok && read.cars.size() > 1) {
            EXPECT_TRUE(sameFields(read.cars.last(), emptyMapCar()));
        }
    });
}
