#include "tests/reader/readerfixture.h"

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

using namespace readertest;
using TLM::SDK::CarStatus;

namespace {

const std::vector<std::string> kReadVariables = {
    "SessionTime",         "SessionTimeRemain",  "SessionTick",
    "SessionNum",          "SessionState",       "IsOnTrack",
    "PlayerCarInPitStall", "OnPitRoad",          "Lap",
    "LapDistPct",          "LapCurrentLapTime",  "LapLastLapTime",
    "ReplayPlaySpeed",     "FuelLevel",          "CarIdxLapDistPct",
    "CarIdxOnPitRoad",     "CarIdxLapCompleted", "CarIdxLastLapTime"};

/** Extreme numbers of a variable's type. */
std::vector<double> extremesOf(int type) {
    const double infinite = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    switch (type) {
        case irsdk_char:
            return {-128.0, 127.0};
        case irsdk_int:
        case irsdk_bitField:
            return {std::numeric_limits<int>::min(), -1.0, std::numeric_limits<int>::max()};
        case irsdk_float:
            return {nan,
                    infinite,
                    -infinite,
                    9.999999562023526e+24,
                    -9.999999562023526e+24,
                    static_cast<double>(std::numeric_limits<float>::max()),
                    static_cast<double>(std::numeric_limits<float>::denorm_min())};
        default:
            return {nan,
                    infinite,
                    -infinite,
                    1e25,
                    -1e25,
                    std::numeric_limits<double>::max(),
                    std::numeric_limits<double>::denorm_min(),
                    9.3e18,
                    -9.3e18,
                    1.9e19};
    }
}

void expectClosesItsLap(Drive& drive, int car) {
    const LapPointer lap = drive.reader.lap(car);
    drive.reader.processLap(car, false);
    EXPECT_TRUE(drive.reader.isLapReady(car));
    EXPECT_EQ(drive.reader.lap(car), lap);
    if (!lap->isEmpty()) {
        EXPECT_EQ(lapTimeOf(lap), 3599000);
        EXPECT_FALSE(lap->containsValue("maxLapDistPct"));
        EXPECT_EQ(lap->carId(), QString::number(car));
    }
}

class BadInput : public ReaderTest {};

}  // namespace

TEST_F(BadInput, InAnyOneVariableNeverPreventsALapFromClosing) {
    for (const QByteArray& mode : {QByteArray("full"), QByteArray("replay"), QByteArray()}) {
        for (const std::string& name : kReadVariables) {
            for (const int type :
                 {int{irsdk_char}, int{irsdk_int}, int{irsdk_float}, int{irsdk_double}}) {
                Drive odd({{name, type}});
                const DebugLines silence;
                odd.session.simMode = mode;
                odd.publishSession().leavePits();
                odd.putOther(kLaterCar, 0.5);
                for (const double extreme : extremesOf(type)) {
                    odd.putOwnOnTrack(0.5, 45.0);
                    odd.advanceClock();
                    odd.block.setAll(name, extreme);
                    odd.repeatTick();
                }
                SCOPED_TRACE(name + " of type " + std::to_string(type) + " in mode \"" +
                             mode.toStdString() + "\"");
                expectClosesItsLap(odd, kOwnCar);
                expectClosesItsLap(odd, kLaterCar);
            }
        }
    }
}

TEST_F(BadInput, InAllVariablesNeverPreventsALapFromClosing) {
    for (const int type : {int{irsdk_int}, int{irsdk_float}, int{irsdk_double}}) {
        for (const double extreme : extremesOf(type)) {
            std::map<std::string, int> types;
            for (const std::string& name : kReadVariables) {
                types[name] = type;
            }
            Drive odd(types);
            const DebugLines silence;
            odd.publishSession();
            for (int tick = 0; tick < 4; ++tick) {
                for (const std::string& name : kReadVariables) {
                    odd.block.setAll(name, tick % 2 == 0 ? extreme : 0.5);
                }
                odd.block.setAll("SessionTick", tick + 1);
                odd.repeatTick();
            }
            expectClosesItsLap(odd, kOwnCar);
            expectClosesItsLap(odd, kLaterCar);
        }
    }
}

TEST_F(BadInput, HasNoEffectOnceTheReadingsAreGoodAgain) {
    drive.publishSession().leavePits();
    for (const double extreme : extremesOf(irsdk_float)) {
        drive.putOwnOnTrack(extreme, extreme);
        drive.block.set("LapLastLapTime", extreme);
        drive.block.set("FuelLevel", extreme);
        drive.tick();
    }
    drive.laps.clear();
    drive.leavePits().driveOwnLap(99.0).driveOwnLap(88.0);
    const std::vector<LapPointer> laps = drive.drivenLaps(kOwnCar);
    ASSERT_GE(laps.size(), 2U);
    EXPECT_EQ(lapTimeOf(laps.back()), 88000);
    EXPECT_TRUE(laps.back()->completed());
}

TEST_F(BadInput, WithADistanceThatIsNaNIsACarInTheWorld) {
    drive.publishSession();
    drive.putOther(kLaterCar, std::numeric_limits<double>::quiet_NaN()).tick(2);
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::OutLap);
    EXPECT_EQ(drive.reader.lap(kLaterCar)->size(), 1);
    drive.putOther(kLaterCar, -std::numeric_limits<double>::infinity()).tick();
    EXPECT_EQ(drive.status(kLaterCar), CarStatus::NotInWorld);
}

TEST_F(BadInput, InTheOwnLapNumberSaturates) {
    Drive odd({{"Lap", irsdk_double}});
    odd.publishSession();
    for (const auto& [reading, lap] :
         std::vector<std::pair<double, int>>{{1e25, std::numeric_limits<int>::max()},
                                             {-1e25, std::numeric_limits<int>::min()},
                                             {4.0, 4}}) {
        odd.block.set("Lap", reading);
        odd.tick();
        EXPECT_EQ(odd.own().current.lap, lap) << reading;
    }
}

TEST_F(BadInput, InAResultsTimeClosesTheLapWithoutATime) {
    for (const QByteArray& time :
         {QByteArray("nan"), QByteArray("inf"), QByteArray("-inf"), QByteArray("1e25"),
          QByteArray("1e300"), QByteArray("-1e300"), QByteArray("1e-300"), QByteArray("1e400"),
          QByteArray("soon"), QByteArray("2147484")}) {
        Drive odd;
        odd.session.sessionTypes = {"Race"};
        odd.publishResults({{"7", "1", "90.0"}});
        odd.putOther(kLaterCar, 0.5).tick(3);
        odd.publishResults({{"7", "2147483647", time}}).tick();
        ASSERT_EQ(odd.drivenLaps(kLaterCar).size(), 1U) << time.toStdString();
        EXPECT_EQ(lapTimeOf(odd.drivenLaps(kLaterCar)[0]), 3599000) << time.toStdString();
        odd.tick(3);
        EXPECT_EQ(odd.drivenLaps(kLaterCar).size(), 1U) << "the largest number stays the same";
        odd.publishResults({{"7", "-2147483648", "90.0"}}).tick();
        EXPECT_EQ(odd.drivenLaps(kLaterCar).size(), 2U);
    }
}

TEST_F(BadInput, InTheSessionTextDoesNotBreakTheReader) {
    const std::vector<QByteArray> texts = {
        "",
        "\n",
        "---",
        "---\n",
        QByteArray(1000, '\n'),
        QByteArray(1000, ' '),
        "---\nDriverInfo:\n",
        "---\nDriverInfo:\n Drivers:\n - CarIdx: \n   UserName: x\n",
        "---\nDriverInfo: 7\nSessionInfo: x\nWeekendInfo: replay\n",
        "---\nSessionInfo:\n Sessions:\n - SessionNum: 0\n   ResultsPositions:\n   - Position: 1\n",
        "---\nWeekendInfo:\n SimMode\n",
        "---\n- - - -\n-\n - : \n: :\n"};
    for (const QByteArray& text : texts) {
        drive.reader.setYaml(text.constData());
        drive.putOther(kLaterCar, 0.5).tick(2);
        TLM::SDK::Lap lap;
        drive.reader.getSessionInfo(kLaterCar, &lap);
    }
    drive.publishSession().leavePits().driveOwnLap(99.0);
    EXPECT_EQ(drive.drivenLaps(kOwnCar).size(), 1U);
}

TEST_F(BadInput, InTheTablesSizeLosesNoLap) {
    drive.publishSession().leavePits();
    const int count = drive.block.header().numVars;
    for (const int numVars : {0, -1, 3, std::numeric_limits<int>::min(), count}) {
        drive.block.header().numVars = numVars;
        drive.tick();
    }
    drive.driveOwnLap(99.0);
    EXPECT_EQ(drive.drivenLaps(kOwnCar).size(), 1U);
}

TEST_F(BadInput, InOffsetsAndCountsLosesNoLap) {
    drive.publishSession().leavePits();
    const int max = std::numeric_limits<int>::max();
    const int min = std::numeric_limits<int>::min();
    for (const std::string& name : kReadVariables) {
        const irsdk_varHeader good = drive.block.variable(name);
        for (const int wrong : {min, -1, max, drive.block.snapshotLength()}) {
            drive.block.variable(name).offset = wrong;
            drive.advanceClock();
            drive.repeatTick();
            drive.block.variable(name) = good;
        }
        for (const int wrong : {min, -1, 0, max}) {
            drive.advanceClock();
            drive.block.variable(name).count = wrong;
            drive.repeatTick();
            drive.block.variable(name) = good;
        }
    }
    drive.laps.clear();
    drive.leavePits().driveOwnLap(99.0).driveOwnLap(88.0);
    EXPECT_EQ(lapTimeOf(drive.lastDrivenLap(kOwnCar)), 88000);
}
