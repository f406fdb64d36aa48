#include "benchmarks/obvious/addsample.h"

#include "sdk/lap.h"
#include "tests/benchmarks/sameresults.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace fastpath {
namespace {

using TLM::SDK::Lap;
using TLM::SDK::Sample;

class RandomSamples {
public:
    explicit RandomSamples(unsigned int seed) : m_random(seed) {}

    Sample next() {
        Sample sample;
        for (const char* const name : names) {
            if (number(4) != 0) {
                sample.setValue(name, value(), number(2) == 0 ? "m" : "");
            }
        }
        return sample;
    }

    int number(int count) { return std::uniform_int_distribution(0, count - 1)(m_random); }

private:
    static constexpr std::array names{
        "a",   "B",    "lap", "lapdistpct", "LapDistPct", "speed", "speed2",
        "spe", "zeta", "yaw", "tempCL",     "tempCL1",    "fuel",  ""};

    QVariant value() {
        switch (number(9)) {
            case 0:
                return {number(1000)};
            case 1:
                return {static_cast<float>(number(1000)) / 7.0F};
            case 2:
                return {number(2) == 0};
            case 3:
                return QVariant::fromValue<quint64>(std::numeric_limits<quint64>::max());
            case 4:
                return {QString::number(number(50))};
            case 5:
                return {};
            case 6:
                return {std::numeric_limits<double>::quiet_NaN()};
            case 7:
                return {QString("no number")};
            default:
                return {static_cast<double>(number(1000)) / 3.0};
        }
    }

    std::mt19937 m_random;
};

TEST(AddSampleFastPath, GivesTheChannelsOfTheObviousWayToTheBit) {
    constexpr int lapCount = 450;
    constexpr int samplesPerLap = 240;
    RandomSamples samples(17);
    int updates = 0;
    for (int i = 0; i < lapCount; ++i) {
        Lap fast;
        Lap obviousLap;
        fast.reserve(samples.number(2 * samplesPerLap));
        const int count = samples.number(2 * samplesPerLap + 1);
        for (int j = 0; j < count; ++j, ++updates) {
            const Sample sample = samples.next();
            fast.addSample(sample);
            obvious::addSample(obviousLap, sample);
        }
        ASSERT_TRUE(haveSameChannels(fast, obviousLap)) << "lap " << i;
    }
    EXPECT_GE(updates, 100'000);
}

}  // namespace
}  // namespace fastpath
