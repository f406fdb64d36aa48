#include "benchmarks/obvious/addsample.h"
#include "sdk/lap.h"
#include "tests/benchmarks/sameresults.h"
#include "tests/support/printqt.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>

using TLM::SDK::Lap;
using TLM::SDK::Sample;

namespace {

class RandomSamples {
public:
    explicit RandomSamples(unsigned seed) : m_random(seed) {}

    // A sample with some of the names. Their texts are new each time, or shared with earlier
    // samples as a real producer shares them.
    Sample next(int percentOfNames) {
        Sample sample;
        for (const QString& shared : kNames) {
            if (below(100) < percentOfNames) {
                const QString name =
                    below(2) == 0 ? shared : QString(shared.constData(), shared.size());
                sample.setValue(name, randomValue(), kUnits[below(3)]);
            }
        }
        return sample;
    }

    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }

private:
    QVariant randomValue() {
        const std::uint64_t bits = m_random();
        switch (below(14)) {
            case 0:
                return std::bit_cast<double>(bits);
            case 1:
                return std::bit_cast<float>(static_cast<std::uint32_t>(bits));
            case 2:
                return static_cast<int>(bits);
            case 3:
                return static_cast<uint>(bits);
            case 4:
                return static_cast<qlonglong>(bits);
            case 5:
                return static_cast<qulonglong>(bits);
            case 6:
                return (bits & 1U) != 0;
            case 7:
                return QVariant();
            case 8:
                return QString::number(static_cast<double>(bits) / 7.0);
            case 9:
                return QString("not a number");
            case 10:
                return QVariant::fromValue(static_cast<short>(bits));
            case 11:
                return std::numeric_limits<double>::quiet_NaN();
            case 12:
                return QVariant(QMetaType::fromType<float>());
            default:
                return static_cast<double>(bits >> 40U) / 16.0;
        }
    }

    const QStringList kNames{"a",   "A",     "ab",      "b",          "B",          "speed",
                             "spe", "Speed", "speed2",  "speedkmh",   "",           " ",
                             "lap", "lap ",  "lapdist", "lapdistpct", "LapDistPct", "tempCL",
                             "z",   "zz",    "tempCL1", "fuel",       "\u00e4",     "0"};
    const QStringList kUnits{"", "m", "s"};
    std::mt19937_64 m_random;
};

/** A copy shares the channel objects that the lap had when it was copied. */
void expectSameObjects(const Lap& copy, const Lap& lap) {
    for (const auto& [name, channel] : copy.channels().asKeyValueRange()) {
        EXPECT_EQ(channel, lap.channel(name)) << name.toStdString();
    }
}

}  // namespace

TEST(LapAddSampleDifferential, GivesTheChannelsOfTheObviousWayToTheBit) {
    constexpr int kLaps = 600;
    constexpr int kMostSamples = 480;
    int updates = 0;
    for (unsigned seed = 0; seed < kLaps; ++seed) {
        RandomSamples samples(seed);
        const int percentOfNames = 5 + samples.below(96);
        const bool isCopied = seed % 3 == 0;
        Lap lap;
        Lap obviousLap;
        QList<Lap> heldByAHost;
        const int count = samples.below(kMostSamples + 1);
        for (int i = 0; i < count; ++i, ++updates) {
            const Sample sample = samples.next(percentOfNames);
            if (isCopied && samples.below(20) == 0) {
                heldByAHost.append(lap);
            }
            lap.addSample(sample);
            obvious::addSample(obviousLap, sample);
        }
        ASSERT_TRUE(fastpath::haveSameChannels(lap, obviousLap)) << "seed " << seed;
        for (const Lap& held : heldByAHost) {
            ASSERT_NO_FATAL_FAILURE(expectSameObjects(held, lap)) << "seed " << seed;
        }
    }
    EXPECT_GE(updates, 100'000);
}
