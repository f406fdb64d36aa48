#include "tests/reader/readerfixture.h"

#include <cmath>
#include <limits>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

using namespace readertest;

namespace {

// Binary fractions, so that positions on a track of 1 km, times, and whole speeds in m/s are exact.
constexpr double kDistanceStep = 1.0 / 1024.0;
constexpr double kTimeStep = 1000.0 / 1024.0;

class Preprocessing : public ReaderTest {
protected:
    iRTelemetryReader& reader = drive.reader;
    LapPointer lap;

    void SetUp() override { lap = reader.lap(kLaterCar); }

    void beLive() {
        drive.publishSession();
        reader.updateCarList();
        lap->setValue("Track length", 1.0, "km");
    }

    void beReplay() {
        drive.session.simMode = "replay";
        beLive();
    }

    void preprocess() { reader.preprocessLap(kLaterCar); }

    /** Another car's lap at these positions, one sample per second. */
    void drivePositions(const QList<double>& positions) {
        QList<double> times;
        for (qsizetype i = 0; i < positions.size(); ++i) {
            times.append(50.0 + static_cast<double>(i));
        }
        record(lap, "lapdistpct", positions, "%");
        record(lap, "sessiontime", times, "s");
    }

    /** Another car's lap at these speeds in m/s; the lap will repeat the last one. */
    void driveSpeeds(const std::vector<int>& speeds) {
        QList<double> positions = {0.0};
        QList<double> times = {64.0};
        for (const int speed : speeds) {
            positions.append(positions.last() + speed * kDistanceStep);
            times.append(times.last() + kTimeStep);
        }
        record(lap, "lapdistpct", positions, "%");
        record(lap, "sessiontime", times, "s");
    }

    /** The speed channel of a lap driven at these speeds. */
    QList<double> speedsAfter(const std::vector<int>& driven) {
        driveSpeeds(driven);
        preprocess();
        return samplesOf(lap, "speed");
    }
};

}  // namespace

TEST_F(Preprocessing, AddsTheOffsetToAChannelNamedLikeIt) {
    lap->setValue("yawOffset", 0.5, QString());
    record(lap, "Yaw", {1.0, 2.0, -3.0}, "rad");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "Yaw"), QList<double>({1.5, 2.5, -2.5}));
    EXPECT_EQ(lap->channel("Yaw")->unit(), "rad");
    EXPECT_FALSE(lap->containsValue("yawOffset"));
}

TEST_F(Preprocessing, DropsTheOffsetEvenWithoutItsChannel) {
    lap->setValue("yawOffset", 0.5, QString());
    preprocess();
    EXPECT_FALSE(lap->containsValue("yawOffset"));
}

TEST_F(Preprocessing, DoesNotChangeTheChannelWithoutAnOffset) {
    record(lap, "Yaw", {1.0, 2.0}, "rad");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "Yaw"), QList<double>({1.0, 2.0}));
}

TEST_F(Preprocessing, DoesNotMatchTheNamesInTheSimulatorsData) {
    lap->setValue("YawOffset", 0.5, QString());
    record(lap, "yaw", {1.0, 2.0}, "rad");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "yaw"), QList<double>({1.0, 2.0}));
    EXPECT_EQ(lap->value("YawOffset").value.toDouble(), 0.5);
}

TEST_F(Preprocessing, ComputesTheFuelWeight) {
    lap->setValue("Kg per fuel litre", 0.75, QString());
    record(lap, "fuellevel", {40.0, 20.0, 0.0}, "l");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "fuelweight"), QList<double>({30.0, 15.0, 0.0}));
    EXPECT_EQ(unitOf(lap, "fuelweight"), "kg");
    EXPECT_EQ(samplesOf(lap, "fuellevel"), QList<double>({40.0, 20.0, 0.0}));
}

TEST_F(Preprocessing, ComputesTheFuelWeightWithANegativeDensityToo) {
    lap->setValue("Kg per fuel litre", -0.75, QString());
    record(lap, "fuellevel", {40.0}, "l");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "fuelweight"), QList<double>({-30.0}));
}

TEST_F(Preprocessing, ComputesNoFuelWeightWithoutDensityOrLevel) {
    record(lap, "fuellevel", {40.0}, "l");
    for (const double density : {0.0, 1e-12, -1e-12}) {
        lap->setValue("Kg per fuel litre", density, QString());
        preprocess();
        EXPECT_FALSE(lap->containsRecordedChannel("fuelweight")) << density;
    }
    lap->setValue("Kg per fuel litre", 1.1e-12, QString());
    preprocess();
    EXPECT_TRUE(lap->containsRecordedChannel("fuelweight"));

    lap->clear();
    record(lap, "fuellevel", {40.0}, "l");
    preprocess();
    EXPECT_FALSE(lap->containsRecordedChannel("fuelweight"));

    lap->clear();
    lap->setValue("Kg per fuel litre", 0.75, QString());
    preprocess();
    EXPECT_FALSE(lap->containsRecordedChannel("fuelweight"));
}

TEST_F(Preprocessing, RenamesPercentToPerUnit) {
    record(lap, "a", {1.0}, "%");
    record(lap, "b", {1.0}, "%/s");
    record(lap, "c", {1.0}, "m");
    record(lap, "d", {1.0}, "");
    record(lap, "fuellevel", {1.0}, "%");
    preprocess();
    EXPECT_EQ(unitOf(lap, "a"), "pu");
    EXPECT_EQ(unitOf(lap, "b"), "%/s");
    EXPECT_EQ(unitOf(lap, "c"), "m");
    EXPECT_EQ(unitOf(lap, "d"), "");
    EXPECT_EQ(unitOf(lap, "fuellevel"), "pu");
    EXPECT_EQ(samplesOf(lap, "a"), QList<double>({1.0}));
}

TEST_F(Preprocessing, DoesNothingElseForTheLiveOwnCar) {
    beLive();
    lap = reader.lap(kOwnCar);
    lap->setValue("Track length", 1.0, "km");
    lap->setValue("Kg per fuel litre", 0.75, QString());
    record(lap, "fuellevel", {40.0, 30.0}, "l");
    drivePositions({0.0, 0.5});
    reader.preprocessLap(kOwnCar);
    EXPECT_EQ(lap->getAvailableRecordedChannels(),
              QStringList({"fuellevel", "fuelweight", "lapdistpct", "sessiontime"}));
    EXPECT_EQ(unitOf(lap, "lapdistpct"), "pu");
}

TEST_F(Preprocessing, DoesNothingElseForTheOwnCarUntilItIsKnownWhetherItIsAReplay) {
    drive.session.simMode.clear();
    beLive();
    lap = reader.lap(kOwnCar);
    drivePositions({0.0, 0.5});
    reader.preprocessLap(kOwnCar);
    EXPECT_EQ(lap->getAvailableRecordedChannels(), QStringList({"lapdistpct", "sessiontime"}));
}

TEST_F(Preprocessing, ComputesTheTimeOfTheReplayedOwnCar) {
    beReplay();
    lap = reader.lap(kOwnCar);
    lap->setValue("Track length", 1.0, "km");
    drivePositions({0.0, 0.5, 0.9});
    reader.preprocessLap(kOwnCar);
    EXPECT_EQ(lap->getAvailableRecordedChannels(),
              QStringList({"dt", "lapcurrentlaptime", "lapdistpct", "sessiontime"}));
    EXPECT_EQ(samplesOf(lap, "lapcurrentlaptime"), QList<double>({0.0, 1.0, 2.0}));
}

TEST_F(Preprocessing, NeedsDistanceAndTime) {
    beLive();
    record(lap, "lapdistpct", {0.0, 0.5}, "%");
    preprocess();
    EXPECT_EQ(lap->getAvailableRecordedChannels(), QStringList({"lapdistpct"}));
    lap->removeChannel("lapdistpct");
    record(lap, "sessiontime", {0.0, 0.5}, "s");
    preprocess();
    EXPECT_EQ(lap->getAvailableRecordedChannels(), QStringList({"sessiontime"}));
}

TEST_F(Preprocessing, ComputesTimeStepsAndRepeatsTheLast) {
    beLive();
    record(lap, "lapdistpct", {0.1, 0.2, 0.3, 0.4}, "%");
    record(lap, "sessiontime", {1.0, 1.5, 2.5, 2.75}, "s");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "dt"), QList<double>({0.5, 1.0, 0.25, 0.25}));
    EXPECT_EQ(unitOf(lap, "dt"), "");
}

TEST_F(Preprocessing, ComputesTheRunningLapTimeOfALapThatStartsAtTheLine) {
    beLive();
    const DebugLines silence;
    record(lap, "lapdistpct", {0.0, 0.2, 0.3, 0.4}, "%");
    record(lap, "sessiontime", {1.0, 1.5, 2.5, 2.75}, "s");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "lapcurrentlaptime"), QList<double>({0.0, 0.5, 1.5, 1.75}));
    EXPECT_EQ(unitOf(lap, "lapcurrentlaptime"), "");
}

TEST_F(Preprocessing, TreatsTheFirstHundredthOfTheLapAsTheLine) {
    beLive();
    record(lap, "sessiontime", {1.0, 1.5}, "s");
    for (const auto& [first, atLine] : std::vector<std::pair<double, bool>>{
             {-0.1, true}, {0.0099, true}, {0.01, false}, {0.5, false}}) {
        record(lap, "lapdistpct", {first, 0.6}, "%");
        record(lap, "lapcurrentlaptime", {77.0, 78.0}, "s");
        preprocess();
        EXPECT_EQ(samplesOf(lap, "lapcurrentlaptime"),
                  atLine ? QList<double>({0.0, 0.5}) : QList<double>({77.0, 78.0}))
            << first;
    }
}

TEST_F(Preprocessing, ComputesDistanceAndSpeedFromTheTracksLength) {
    beLive();
    lap->setValue("Track length", 2.5, "km");
    record(lap, "lapdistpct", {0.0, 0.25, 0.75, 1.0}, "%");
    record(lap, "sessiontime", {0.0, 10.0, 30.0, 35.0}, "s");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "lapdist"), QList<double>({0.0, 625.0, 1875.0, 2500.0}));
    EXPECT_EQ(unitOf(lap, "lapdist"), "m");
    EXPECT_EQ(samplesOf(lap, "speed"), QList<double>({62.5, 62.5, 125.0, 125.0}));
    EXPECT_EQ(unitOf(lap, "speed"), "m/s");
    EXPECT_EQ(unitOf(lap, "dt"), "");
}

TEST_F(Preprocessing, UsesTheClocksUnitForTheSpeed) {
    beLive();
    drivePositions({0.1, 0.2});
    lap->channel("sessiontime")->setUnit("h");
    preprocess();
    EXPECT_EQ(unitOf(lap, "speed"), "m/h");
}

TEST_F(Preprocessing, ComputesNoDistanceWithoutATracksLength) {
    beLive();
    lap->removeValue("Track length");
    drivePositions({0.1, 0.2});
    preprocess();
    EXPECT_EQ(lap->getAvailableRecordedChannels(),
              QStringList({"dt", "lapdistpct", "sessiontime"}));
}

TEST_F(Preprocessing, TreatsATracksLengthThatIsNotANumberAsZero) {
    beLive();
    lap->setValue("Track length", QString("long"), QString());
    drivePositions({0.1, 0.2});
    preprocess();
    EXPECT_EQ(samplesOf(lap, "lapdist"), QList<double>({0.0, 0.0}));
}

TEST_F(Preprocessing, ComputesNoDistanceUnlessItIsLive) {
    for (const QByteArray& mode : {QByteArray("replay"), QByteArray()}) {
        reader.initialize();
        reader.clear();
        drive.session.simMode = mode;
        beLive();
        lap->clear();
        lap->setValue("Track length", 1.0, "km");
        drivePositions({0.1, 0.2});
        preprocess();
        EXPECT_EQ(lap->getAvailableRecordedChannels(),
                  QStringList({"dt", "lapdistpct", "sessiontime"}));
    }
}

TEST_F(Preprocessing, ReplacesRecordedChannelsOfTheDerivedNames) {
    beLive();
    drivePositions({0.1, 0.2});
    record(lap, "speed", {1.0, 2.0}, "km/h");
    record(lap, "lapdist", {1.0, 2.0}, "km");
    record(lap, "dt", {1.0, 2.0}, "h");
    preprocess();
    EXPECT_EQ(unitOf(lap, "speed"), "m/s");
    EXPECT_EQ(unitOf(lap, "lapdist"), "m");
    EXPECT_EQ(unitOf(lap, "dt"), "");
    EXPECT_TRUE(lap->getAvailableCalculatedChannels().isEmpty());
}

TEST_F(Preprocessing, GivesALapOfOneSampleASingleZero) {
    beLive();
    record(lap, "lapdistpct", {0.005}, "%");
    record(lap, "sessiontime", {77.0}, "s");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "dt"), QList<double>({0.0}));
    EXPECT_EQ(samplesOf(lap, "speed"), QList<double>({0.0}));
    EXPECT_EQ(samplesOf(lap, "lapcurrentlaptime"), QList<double>({0.0}));
    EXPECT_EQ(samplesOf(lap, "lapdist"), QList<double>({0.005 * 1.0 * 1000.0}));
}

TEST_F(Preprocessing, GivesALapOfTwoSamplesItsStepTwice) {
    beLive();
    record(lap, "lapdistpct", {0.0, 0.5}, "%");
    record(lap, "sessiontime", {77.0, 87.0}, "s");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "dt"), QList<double>({10.0, 10.0}));
    EXPECT_EQ(samplesOf(lap, "speed"), QList<double>({50.0, 50.0}));
    EXPECT_EQ(samplesOf(lap, "lapcurrentlaptime"), QList<double>({0.0, 10.0}));
}

TEST_F(Preprocessing, UsesTheSmallerCountWhenTimeIsShorterThanDistance) {
    beLive();
    record(lap, "lapdistpct", {0.0, 0.25, 0.5, 0.75}, "%");
    record(lap, "sessiontime", {0.0, 10.0, 30.0}, "s");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "dt"), QList<double>({10.0, 20.0, 20.0}));
    EXPECT_EQ(samplesOf(lap, "lapcurrentlaptime"), QList<double>({0.0, 10.0, 30.0}));
    EXPECT_EQ(samplesOf(lap, "lapdist"), QList<double>({0.0, 250.0, 500.0}));
    EXPECT_EQ(samplesOf(lap, "speed"), QList<double>({25.0, 12.5, 12.5}));
}

TEST_F(Preprocessing, UsesTheDistancesCountWhenTimeIsLonger) {
    beLive();
    record(lap, "lapdistpct", {0.0, 0.25}, "%");
    record(lap, "sessiontime", {0.0, 10.0, 30.0}, "s");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "dt"), QList<double>({10.0, 10.0}));
    EXPECT_EQ(samplesOf(lap, "speed"), QList<double>({25.0, 25.0}));
}

TEST_F(Preprocessing, SurvivesChannelsWithoutAnySample) {
    beLive();
    record(lap, "lapdistpct", {}, "%");
    record(lap, "sessiontime", {}, "s");
    preprocess();
    EXPECT_TRUE(samplesOf(lap, "dt").isEmpty());
    record(lap, "lapdistpct", {0.0, 0.5}, "%");
    preprocess();
    EXPECT_TRUE(samplesOf(lap, "dt").isEmpty());
}

TEST_F(Preprocessing, KeepsTheInfiniteSpeedOfAStoppedClock) {
    beLive();
    record(lap, "lapdistpct", {0.1, 0.2, 0.2, 0.3}, "%");
    record(lap, "sessiontime", {1.0, 1.0, 1.0, 2.0}, "s");
    preprocess();
    const QList<double> speed = samplesOf(lap, "speed");
    ASSERT_EQ(speed.size(), 4);
    EXPECT_EQ(speed[0], std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(speed[1]));
}

TEST_F(Preprocessing, RepairsAPeakBetweenEqualSpeeds) {
    beLive();
    const DebugLines debug;
    EXPECT_EQ(speedsAfter({40, 40, 60, 40, 40}), QList<double>({40, 40, 40, 40, 40, 40}));
    ASSERT_EQ(DebugLines::lines().size(), 2);
    EXPECT_TRUE(DebugLines::lines()[0].startsWith("peak detected"));
    const QStringList numbers =
        DebugLines::lines()[0].mid(13).simplified().split(' ', Qt::SkipEmptyParts);
    ASSERT_EQ(numbers.size(), 4);
    EXPECT_EQ(numbers[0].toInt(), 2);
    EXPECT_EQ(numbers[1].toDouble(), 40.0);
    EXPECT_EQ(numbers[2].toDouble(), 60.0);
    EXPECT_EQ(numbers[3].toDouble(), 40.0);
    EXPECT_TRUE(DebugLines::lines()[1].startsWith("peak fixed"));
    EXPECT_EQ(DebugLines::lines()[1].mid(10).toDouble(), 40.0);
}

struct PeakRule {
    const char* name;
    std::vector<int> driven;  // speeds of which the lap repeats the last
    QList<double> expected;
    int repairs;
};

void PrintTo(const PeakRule& rule, std::ostream* out) {
    *out << rule.name;
}

const PeakRule kPeakRules[] = {
    {"RepairsAPeakWithTheMeanOfItsNeighbours", {40, 60, 42, 42}, {40, 41, 42, 42, 42}, 1},
    {"RepairsADip", {40, 40, 20, 40, 40}, {40, 40, 40, 40, 40, 40}, 1},
    {"RepairsAPeakInTheFirstAndTheLastPossiblePlace",
     {40, 60, 40, 40, 60, 40},
     {40, 40, 40, 40, 40, 40, 40},
     2},
    {"KeepsTheFirstAndTheLastSpeed", {90, 40, 40, 40, 90}, {90, 40, 40, 40, 90, 90}, 0},
    {"KeepsAStepUp", {40, 40, 60, 60, 60}, {40, 40, 60, 60, 60, 60}, 0},
    {"KeepsAStepDown", {60, 60, 40, 40, 40}, {60, 60, 40, 40, 40, 40}, 0},
    {"KeepsAPeakOfFiveMetresASecond", {40, 45, 40, 40}, {40, 45, 40, 40, 40}, 0},
    {"KeepsADipOfFiveMetresASecond", {40, 35, 40, 40}, {40, 35, 40, 40, 40}, 0},
    {"RepairsAPeakOfSixMetresASecond", {40, 46, 40, 40}, {40, 40, 40, 40, 40}, 1},
    {"RepairsADipOfSixMetresASecond", {40, 34, 40, 40}, {40, 40, 40, 40, 40}, 1},
    // Up by 30, down by 20: their sum is exactly five times their difference.
    {"KeepsAPeakWhoseSidesAreJustTooUnequal", {40, 70, 50, 50}, {40, 70, 50, 50, 50}, 0},
    {"KeepsAPeakWhoseSidesAreMoreUnequal", {40, 70, 51, 51}, {40, 70, 51, 51, 51}, 0},
    {"RepairsAPeakWhoseSidesAreJustEqualEnough", {40, 70, 49, 49}, {40, 44.5, 49, 49, 49}, 1},
    {"RepairsAPeakWhoseSidesAreMoreEqual", {40, 70, 48, 48}, {40, 44, 48, 48, 48}, 1},
    {"UsesARepairedSpeedAtTheNextPeak", {10, 30, 10, 30, 10, 10}, {10, 10, 10, 10, 10, 10, 10}, 2},
    {"RepairsNothingInALapOfTwoSamples", {60}, {60, 60}, 0},
    {"RepairsNothingInALapOfThreeSamples", {60, 10}, {60, 10, 10}, 0},
};

class PreprocessingOfPeaks : public Preprocessing,
                             public ::testing::WithParamInterface<PeakRule> {};

TEST_P(PreprocessingOfPeaks, Rule) {
    beLive();
    const DebugLines debug;
    EXPECT_EQ(speedsAfter(GetParam().driven), GetParam().expected);
    EXPECT_EQ(DebugLines::lines().size(), 2 * GetParam().repairs) << "two lines per repair";
}

INSTANTIATE_TEST_SUITE_P(Every, PreprocessingOfPeaks, ::testing::ValuesIn(kPeakRules),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(Preprocessing, KeepsTheMarkerOfAMissingDistance) {
    beLive();
    const DebugLines silence;
    record(lap, "lapdistpct", {0.1, 9.999999562023526e+24, 0.3, 0.4}, "%");
    record(lap, "sessiontime", {1.0, 2.0, 3.0, 4.0}, "s");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "lapdistpct")[1], 9.999999562023526e+24);
    EXPECT_EQ(samplesOf(lap, "speed").size(), 4);
}

TEST_F(Preprocessing, SurvivesNaNAndInfinities) {
    beLive();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinite = std::numeric_limits<double>::infinity();
    const DebugLines silence;
    record(lap, "lapdistpct", {nan, infinite, -infinite, 1e308, -1e308}, "%");
    record(lap, "sessiontime", {1e308, -1e308, nan, infinite, 0.0}, "s");
    preprocess();
    EXPECT_EQ(samplesOf(lap, "dt").size(), 5);
    EXPECT_EQ(samplesOf(lap, "speed").size(), 5);
    EXPECT_FALSE(lap->containsRecordedChannel("lapcurrentlaptime"))
        << "a NaN distance is not at the line";
}
