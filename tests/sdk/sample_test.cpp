#include "sdk/sample.h"

#include "tests/sdk/streams.h"
#include "tests/support/printqt.h"

#include <QMetaType>
#include <QVariant>

#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

using TLM::SDK::CarInfo;
using TLM::SDK::CarStatus;
using TLM::SDK::DynamicData;
using TLM::SDK::Sample;

static_assert(std::is_base_of_v<CarInfo, Sample>);
static_assert(std::is_base_of_v<DynamicData, Sample>);
static_assert(std::is_nothrow_move_constructible_v<Sample>);

namespace {

Sample filledSample() {
    Sample sample;
    static_cast<CarInfo&>(sample) = filledCar();
    sample.setValue("speed", 42.0, "m/s");
    return sample;
}

}  // namespace

TEST(Sample, StartsAsADefaultCarWithoutValues) {
    const Sample sample;
    EXPECT_TRUE(sample.carId().isEmpty());
    EXPECT_TRUE(sample.detailedTelemetry());
    EXPECT_EQ(sample.status(), CarStatus::Undefined);
    EXPECT_TRUE(sample.isEmpty());
}

TEST(Sample, CopiesShareTheValues) {
    const Sample sample = filledSample();
    Sample copy = sample;
    EXPECT_TRUE(sameFields(copy, sample));
    EXPECT_TRUE(std::as_const(copy).data().isSharedWith(sample.data()));
    copy.setValue("speed", 1.0, "m/s");
    EXPECT_EQ(sample.value("speed").value.toDouble(), 42.0);
}

TEST(SampleStream, WritesOnlyTheCarRecord) {
    EXPECT_EQ(written(filledSample()).toHex(), filledCarBytes().toHex());
}

TEST(SampleStream, ReadsBackTheCarWithoutValues) {
    Sample read;
    EXPECT_EQ(readInto(written(filledSample()), read), QDataStream::Ok);
    EXPECT_TRUE(sameFields(read, filledSample()));
    EXPECT_TRUE(read.isEmpty());
}

TEST(SampleStream, KeepsTheValuesOfTheTarget) {
    Sample read = filledSample();
    EXPECT_EQ(readInto(WireBytes().u32(0).bytes(), read), QDataStream::Ok);
    EXPECT_TRUE(sameFields(read, emptyMapCar()));
    EXPECT_TRUE(read.containsValue("speed"));
}

TEST(SampleStream, ResetsTheCarWhenCutOffAtAnyByte) {
    EXPECT_TRUE(isResetByEveryCut(filledSample()));
}

TEST(SampleStream, TravelsThroughAVariantAndAStream) {
    const QVariant variant = QVariant::fromValue(filledSample());
    EXPECT_STREQ(variant.typeName(), "TLM::SDK::Sample");
    EXPECT_TRUE(variant.value<Sample>().containsValue("speed"));

    qRegisterMetaType<Sample>();
    QVariant read;
    EXPECT_EQ(readInto(written(variant), read), QDataStream::Ok);
    EXPECT_TRUE(sameFields(read.value<Sample>(), filledSample()));
}
