#include "sdk/lap.h"
#include "tests/support/printqt.h"

#include <QMap>

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

using TLM::SDK::Channel;
using TLM::SDK::Lap;
using TLM::SDK::Sample;

namespace {

constexpr double kMissing = 9.999999562023526e+24;

Sample sampleOf(std::initializer_list<std::pair<const char*, QVariant>> values) {
    Sample sample;
    for (const auto& [name, value] : values) {
        sample.setValue(name, value, QString());
    }
    return sample;
}

QList<double> entries(const Lap& lap, const QString& name) {
    const QSharedPointer<Channel> channel = lap.channel(name);
    return channel ? channel->samples : QList<double>();
}

double addedAs(const QVariant& value) {
    Lap lap;
    lap.addSample(sampleOf({{"a", value}}));
    return lap.channel("a")->sample(0);
}

/** A rule of addSample(), as a sentence: some samples and the channels that they give. */
struct Rule {
    const char* name;
    QList<Sample> samples;
    QMap<QString, QList<double>> channels;
};

void PrintTo(const Rule& rule, std::ostream* out) {
    *out << rule.name;
}

const Rule kRules[] = {
    {"AppendsToTheChannelOfTheSameName",
     {sampleOf({{"a", 1}, {"b", 2}}), sampleOf({{"a", 3}, {"b", 4}})},
     {{"a", {1, 3}}, {"b", {2, 4}}}},
    {"MarksAChannelThatTheSampleLacks",
     {sampleOf({{"a", 1}, {"b", 2}}), sampleOf({{"b", 5}})},
     {{"a", {1, kMissing}}, {"b", {2, 5}}}},
    {"MarksTheChannelsAfterTheSamplesLastName",
     {sampleOf({{"a", 1}, {"b", 2}, {"c", 3}}), sampleOf({{"a", 4}})},
     {{"a", {1, 4}}, {"b", {2, kMissing}}, {"c", {3, kMissing}}}},
    {"MarksEveryChannelForASampleWithoutValues",
     {sampleOf({{"a", 1}, {"b", 2}}), Sample()},
     {{"a", {1, kMissing}}, {"b", {2, kMissing}}}},
    {"LeavesAnEmptyLapEmptyForASampleWithoutValues", {Sample()}, {}},
    {"BackFillsANewChannelWithTheMissingMarker",
     {sampleOf({{"a", 1}}), sampleOf({{"a", 4}, {"c", 9}})},
     {{"a", {1, 4}}, {"c", {kMissing, 9}}}},
    {"BackFillsANewChannelBetweenTwoOthers",
     {sampleOf({{"a", 1}, {"c", 2}}), sampleOf({{"a", 1}, {"c", 2}}),
      sampleOf({{"a", 3}, {"b", 7}, {"c", 4}})},
     {{"a", {1, 1, 3}}, {"b", {kMissing, kMissing, 7}}, {"c", {2, 2, 4}}}},
    // The first channel does not have this sample's entry yet, so the new one is one entry short.
    {"LeavesANewFirstChannelOneEntryShort",
     {sampleOf({{"b", 2}}), sampleOf({{"a", 7}, {"b", 3}})},
     {{"a", {7}}, {"b", {2, 3}}}},
    // Two new names before all others: the second is filled up to the length of the first, which is
    // the first channel by then and has its entry.
    {"BackFillsByTheChannelThatIsFirstAtThatMoment",
     {sampleOf({{"c", 1}}), sampleOf({{"c", 2}}), sampleOf({{"a", 7}, {"b", 8}, {"c", 3}})},
     {{"a", {kMissing, 7}}, {"b", {kMissing, 8}}, {"c", {1, 2, 3}}}},
    {"ComparesNamesWithCase",
     {sampleOf({{"Speed", 1}, {"speed", 2}}), sampleOf({{"speed", 3}})},
     {{"Speed", {1, kMissing}}, {"speed", {2, 3}}}},
};

class LapAddSampleBy : public ::testing::TestWithParam<Rule> {};

}  // namespace

TEST(LapAddSample, CreatesAChannelForEveryValueOfTheFirstSample) {
    Sample sample;
    sample.setValue("b", 2.0, "m");
    sample.setValue("a", 1.0, "s");
    Lap lap;
    lap.addSample(sample);
    EXPECT_EQ(lap.getAvailableRecordedChannels(), QStringList({"a", "b"}));
    EXPECT_EQ(entries(lap, "a"), QList<double>({1}));
    EXPECT_EQ(entries(lap, "b"), QList<double>({2}));
    EXPECT_EQ(lap.channel("a")->unit(), "s");
    EXPECT_EQ(lap.channel("b")->unit(), "m");
}

TEST_P(LapAddSampleBy, Rule) {
    Lap lap;
    for (const Sample& sample : GetParam().samples) {
        lap.addSample(sample);
    }
    EXPECT_EQ(lap.getAvailableRecordedChannels(), GetParam().channels.keys());
    for (const auto& [name, expected] : GetParam().channels.asKeyValueRange()) {
        EXPECT_EQ(entries(lap, name), expected) << name.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Every, LapAddSampleBy, ::testing::ValuesIn(kRules),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(LapAddSample, BackFillsNothingBesideAFirstChannelWithoutEntries) {
    Lap lap;
    lap.addChannel(new Channel, "b");
    lap.addSample(sampleOf({{"a", 7}}));
    EXPECT_EQ(entries(lap, "a"), QList<double>({7}));
    EXPECT_EQ(entries(lap, "b"), QList<double>({kMissing}));
}

TEST(LapAddSample, WritesTheSinglePrecisionMarker) {
    Lap lap;
    lap.addSample(sampleOf({{"a", 1}}));
    lap.addSample(Sample());
    EXPECT_EQ(std::bit_cast<std::uint64_t>(lap.channel("a")->sample(1)), 0x45208B2A20000000U);
    EXPECT_FALSE(lap.channel("a")->isValid(1));
}

TEST(LapAddSample, KeepsTheUnitOfTheFirstSample) {
    Lap lap;
    Sample sample;
    sample.setValue("a", 1.0, "m");
    lap.addSample(sample);
    sample.setValue("a", 2.0, "ft");
    lap.addSample(sample);
    EXPECT_EQ(lap.channel("a")->unit(), "m");
}

TEST(LapAddSample, GivesALateChannelTheUnitOfItsFirstValue) {
    Lap lap;
    lap.addSample(sampleOf({{"a", 1}}));
    Sample sample = sampleOf({{"a", 1}});
    sample.setValue("b", 2.0, "kPa");
    lap.addSample(sample);
    EXPECT_EQ(lap.channel("b")->unit(), "kPa");
}

TEST(LapAddSample, ChangesNeitherCalculatedChannelsNorCarFields) {
    Lap lap;
    lap.addCalculatedChannel(QSharedPointer<Channel>::create(), "a");
    lap.setDriverName("Zoe");
    Sample sample = sampleOf({{"a", 1}});
    sample.setDriverName("Max");
    lap.addSample(sample);
    EXPECT_TRUE(lap.calculatedChannel("a")->samples.isEmpty());
    EXPECT_EQ(entries(lap, "a"), QList<double>({1}));
    EXPECT_EQ(lap.driverName(), "Zoe");
}

TEST(LapAddSample, ReadsEveryNumberAsQtConvertsIt) {
    const QVariant numbers[] = {
        1.5,
        -1e300,
        std::numeric_limits<double>::infinity(),
        0.1F,
        -3.5F,
        std::numeric_limits<int>::min(),
        std::numeric_limits<int>::max(),
        std::numeric_limits<uint>::max(),
        std::numeric_limits<qlonglong>::min(),
        std::numeric_limits<qlonglong>::max(),
        std::numeric_limits<qulonglong>::max(),
        true,
        false,
        QVariant::fromValue(static_cast<short>(-7)),
        QVariant::fromValue(static_cast<signed char>(-7)),
        QVariant(QMetaType::fromType<double>()),
        QVariant(QMetaType::fromType<bool>()),
        QString("12.25"),
    };
    for (const QVariant& number : numbers) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(addedAs(number)),
                  std::bit_cast<std::uint64_t>(number.toDouble()))
            << number.typeName() << ' ' << number.toString().toStdString();
    }
}

TEST(LapAddSample, CountsValuesThatAreNotNumbersAsZero) {
    EXPECT_EQ(addedAs(QVariant()), 0.0);
    EXPECT_EQ(addedAs(QString("fast")), 0.0);
    EXPECT_EQ(addedAs(QVariantList{1, 2}), 0.0);
}

TEST(LapAddSample, DoesNotChangeACopiedList) {
    Lap lap;
    lap.addSample(sampleOf({{"a", 1}}));
    const QList<double> kept = lap.channel("a")->samples;
    lap.addSample(sampleOf({{"a", 2}}));
    EXPECT_EQ(kept, QList<double>({1}));
    EXPECT_EQ(entries(lap, "a"), QList<double>({1, 2}));
}

TEST(LapAddSample, AppendsToAChannelThatAnotherLapShares) {
    Lap lap;
    lap.addSample(sampleOf({{"a", 1}}));
    Lap copy = lap;
    lap.addSample(sampleOf({{"a", 2}}));
    EXPECT_EQ(entries(copy, "a"), QList<double>({1, 2}));
    EXPECT_TRUE(copy.channels().isSharedWith(lap.channels())) << "appending copies no map";
}

TEST(LapAddSample, KeepsNewChannelsOutOfASharedMap) {
    Lap lap;
    lap.addSample(sampleOf({{"b", 1}, {"d", 1}}));
    const Lap copy = lap;
    lap.addSample(sampleOf({{"a", 5}, {"b", 2}, {"c", 6}, {"d", 3}, {"e", 7}}));
    EXPECT_EQ(copy.getAvailableRecordedChannels(), QStringList({"b", "d"}));
    EXPECT_EQ(lap.getAvailableRecordedChannels(), QStringList({"a", "b", "c", "d", "e"}));
    EXPECT_EQ(entries(lap, "a"), QList<double>({5}));
    EXPECT_EQ(entries(lap, "b"), QList<double>({1, 2}));
    EXPECT_EQ(entries(lap, "c"), QList<double>({6}));
    EXPECT_EQ(entries(lap, "d"), QList<double>({1, 3}));
    EXPECT_EQ(entries(lap, "e"), QList<double>({7}));
}

TEST(LapAddSample, ShowsEverySampleInAChannelThatWasHandedOut) {
    const Sample sample = sampleOf({{"a", 1}, {"b", 2}});
    Lap lap;
    lap.addSample(sample);
    lap.addSample(sample);
    const QSharedPointer<Channel> byName = lap.channel("a");
    EXPECT_EQ(byName->samples.size(), 2);
    for (int i = 3; i < 40; ++i) {
        lap.addSample(sample);
        ASSERT_EQ(byName->samples.size(), i);
    }

    Lap other;
    const Lap::ChannelMap& map = other.channels();
    for (int i = 1; i < 40; ++i) {
        other.addSample(sample);
        ASSERT_EQ(map.value("b")->samples.size(), i);
    }

    Lap given;
    const auto own = QSharedPointer<Channel>::create();
    given.addChannel(own, "a");
    for (int i = 1; i < 40; ++i) {
        given.addSample(sampleOf({{"a", 1}}));
        ASSERT_EQ(own->samples.size(), i);
    }
}

TEST(LapAddSample, LosesNothingWhenALapIsCopiedMovedOrChangedBetweenSamples) {
    const Sample sample = sampleOf({{"a", 1}, {"b", 2}});
    const QList<double> three = {2, 2, 2};
    const auto recorded = [&sample] {
        Lap lap;
        for (int i = 0; i < 3; ++i) {
            lap.addSample(sample);
        }
        return lap;
    };

    Lap original = recorded();
    const Lap copy = original;
    EXPECT_EQ(entries(copy, "b"), three);
    original.addSample(sample);
    EXPECT_EQ(copy.channel("b")->samples.size(), 4) << "the channels are shared";

    Lap assigned = recorded();
    assigned = original;
    assigned.addSample(sample);
    EXPECT_EQ(entries(original, "b").size(), 5);

    Lap source = recorded();
    Lap moved = std::move(source);
    moved.addSample(sample);
    EXPECT_EQ(entries(moved, "b").size(), 4);
    source = Lap();
    source.addSample(sample);
    EXPECT_EQ(entries(source, "b"), QList<double>({2}));

    Lap reduced = recorded();
    reduced.removeChannel("a");
    EXPECT_EQ(entries(reduced, "b"), three);
    reduced.addSample(sample);
    EXPECT_EQ(entries(reduced, "b").size(), 4);

    Lap extended = recorded();
    extended.addChannel(new Channel, "c");
    EXPECT_EQ(entries(extended, "b"), three);

    Lap cleared = recorded();
    cleared.clear();
    EXPECT_EQ(cleared.size(), 0);
    cleared.addSample(sample);
    EXPECT_EQ(entries(cleared, "b"), QList<double>({2}));
}

TEST(LapAddSample, ContinuesAChannelWhoseSamplesAreShared) {
    Lap lap;
    const Sample sample = sampleOf({{"a", 1}, {"b", 2}});
    QList<double> held;
    for (int i = 0; i < 200; ++i) {
        lap.addSample(sample);
        if (i % 7 == 0) {
            held = lap.channel("b")->samples;
            ASSERT_EQ(held.size(), i + 1);
        }
    }
    EXPECT_EQ(held.size(), 197);
    EXPECT_EQ(lap.channel("b")->samples.size(), 200);
}

TEST(LapAddSample, ContinuesAChannelThatReplacedARecordedOne) {
    Lap lap;
    lap.addSample(sampleOf({{"a", 1}, {"b", 2}}));
    const auto former = lap.channel("a");
    const auto replacement = QSharedPointer<Channel>::create();
    replacement->samples = {7.0};
    lap.addChannel(replacement, "a");
    lap.addSample(sampleOf({{"a", 3}, {"b", 4}}));
    EXPECT_EQ(entries(lap, "a"), QList<double>({7, 3}));
    EXPECT_EQ(former->samples, QList<double>({1}));
    EXPECT_EQ(entries(lap, "b"), QList<double>({2, 4}));
}

TEST(LapAddSample, MarksAMissingReadingInAChannelThatWasAddedMeanwhile) {
    Lap lap;
    lap.addSample(sampleOf({{"b", 2}}));
    const auto added = QSharedPointer<Channel>::create();
    added->samples = {7.0};
    lap.addChannel(added, "a");
    lap.addSample(sampleOf({{"b", 4}}));
    EXPECT_EQ(entries(lap, "a"), QList<double>({7, kMissing}));
    EXPECT_EQ(entries(lap, "b"), QList<double>({2, 4}));
}

TEST(LapAddSample, CreatesAChannelAgainThatWasRemovedMeanwhile) {
    Lap lap;
    lap.addSample(sampleOf({{"a", 1}, {"b", 2}}));
    lap.addSample(sampleOf({{"a", 3}, {"b", 4}}));
    lap.removeChannel("b");
    lap.addSample(sampleOf({{"a", 5}, {"b", 6}}));
    EXPECT_EQ(entries(lap, "a"), QList<double>({1, 3, 5}));
    EXPECT_EQ(entries(lap, "b"), QList<double>({kMissing, kMissing, 6}));
}
