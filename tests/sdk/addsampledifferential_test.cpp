#include "sdk/lap.h"
#include "tests/support/printqt.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <random>

using TLM::SDK::Channel;
using TLM::SDK::Lap;
using TLM::SDK::Sample;
using TLM::SDK::Value;

namespace {

constexpr double kMissing = 9.999999562023526e+24;

// Recording as one would say it aloud: by name, one step at a time.
class PlainLap {
public:
    void addSample(const Sample& sample) {
        if (channels.isEmpty()) {
            for (const QString& name : sample.valueNameList()) {
                const Value value = sample.value(name);
                insert(name, value.unit(), {value.value.toDouble()});
            }
            return;
        }
        QStringList sampleNames = sample.valueNameList();
        QStringList channelNames = channels.keys();
        while (!sampleNames.isEmpty() || !channelNames.isEmpty()) {
            if (sampleNames.isEmpty() ||
                (!channelNames.isEmpty() && channelNames.first() < sampleNames.first())) {
                channels[channelNames.takeFirst()]->samples.append(kMissing);
            } else if (channelNames.isEmpty() || sampleNames.first() < channelNames.first()) {
                const QString name = sampleNames.takeFirst();
                const Value value = sample.value(name);
                QList<double> entries;
                for (qsizetype i = 0; i < channels.first()->samples.size() - 1; ++i) {
                    entries.append(kMissing);
                }
                entries.append(value.value.toDouble());
                insert(name, value.unit(), entries);
            } else {
                const QString name = sampleNames.takeFirst();
                channelNames.removeFirst();
                channels[name]->samples.append(sample.value(name).value.toDouble());
            }
        }
    }

    QMap<QString, QSharedPointer<Channel>> channels;

private:
    void insert(const QString& name, const QString& unit, const QList<double>& entries) {
        auto channel = QSharedPointer<Channel>::create();
        channel->setUnit(unit);
        channel->samples = entries;
        channels.insert(name, channel);
    }
};

class RandomSamples {
public:
    explicit RandomSamples(unsigned seed) : m_random(seed) {}

    // A sample of some of the names. Their texts are made anew each time, or shared with
    // earlier samples as a producer's are.
    Sample next(int percentOfNames) {
        Sample sample;
        for (const QString& shared : kNames) {
            if (below(100) < percentOfNames) {
                const QString name =
                    below(2) == 0 ? shared : QString(shared.constData(), shared.size());
                sample.setValue(name, randomValue(), below(2) == 0 ? "m" : "s");
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
                return QString("no number");
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

    const QStringList kNames{"a", "A",   "ab",   "b",       "speed", "Speed", "speedkmh", "",
                             " ", "lap", "lap ", "lapdist", "z",     "zz",    "\u00e4",   "0"};
    std::mt19937_64 m_random;
};

bool sameBits(const QList<double>& left, const QList<double>& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](double a, double b) {
        return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
    });
}

void expectEqual(const Lap& lap, const PlainLap& plain) {
    ASSERT_EQ(lap.channels().keys(), plain.channels.keys());
    for (const QString& name : plain.channels.keys()) {
        EXPECT_EQ(lap.channel(name)->unit(), plain.channels[name]->unit());
        ASSERT_TRUE(sameBits(lap.channel(name)->samples, plain.channels[name]->samples))
            << name.toStdString();
    }
}

/** A copy has the very channels that the lap had when it was copied. */
void expectSameObjects(const Lap& copy, const Lap& lap) {
    for (const auto& [name, channel] : copy.channels().asKeyValueRange()) {
        EXPECT_EQ(channel, lap.channel(name)) << name.toStdString();
    }
}

}  // namespace

TEST(LapAddSampleDifferential, EqualsThePlainRecordingToTheBit) {
    int unseenValues = 0;
    for (unsigned seed = 0; seed < 600; ++seed) {
        RandomSamples samples(seed);
        const int percentOfNames = 5 + samples.below(96);
        // From its first copy on a lap records in another way.
        const bool isCopied = seed % 3 == 0;
        Lap lap;
        lap.reserve(samples.below(50));
        PlainLap plain;
        QList<Lap> heldByAHost;
        for (int i = 0; i < 60; ++i) {
            const Sample sample = samples.next(percentOfNames);
            if (isCopied && samples.below(20) == 0) {
                heldByAHost.append(lap);
            }
            unseenValues += lap.areChannelsSeen() ? 0 : static_cast<int>(sample.data().size());
            lap.addSample(sample);
            plain.addSample(sample);
        }
        ASSERT_EQ(lap.areChannelsSeen(), !heldByAHost.isEmpty());
        ASSERT_NO_FATAL_FAILURE(expectEqual(lap, plain)) << "seed " << seed;
        for (const Lap& held : heldByAHost) {
            ASSERT_NO_FATAL_FAILURE(expectSameObjects(held, lap)) << "seed " << seed;
        }
    }
    EXPECT_GT(unseenValues, 100'000);
}
