#include "tests/fuzz/seeds.h"

#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"
#include "tests/fuzz/blockscript.h"
#include "tests/fuzz/streamrecords.h"
#include "tests/sdk/streams.h"
#include "tests/support/testblock.h"

#include <array>
#include <cstddef>

namespace fuzz {

namespace {

using testsupport::TestBlock;

constexpr int kSlots = 64;

std::string drivers(int count) {
    std::string text =
        "DriverInfo:\n DriverCarIdx: 2\n DriverCarFuelMaxLtr: 50.0\n"
        " DriverCarMaxFuelPct: 1.0\n DriverCarFuelKgPerLtr: 0.75\n Drivers:\n";
    for (int car = 0; car < count; ++car) {
        const std::string number = std::to_string(car);
        text.append(" - CarIdx: ").append(number);
        text.append("\n   UserName: Zo\xEB Driver ").append(number);
        text.append("\n   TeamName: Team ").append(number);
        text.append(
            "\n   CarScreenName: Roadster\n   CarClassShortName: RDS\n   LicColor: 0xfc0706\n");
    }
    return text;
}

std::string sessions(const std::string& type, int results) {
    std::string text = "SessionInfo:\n Sessions:\n - SessionNum: 0\n   SessionType: " + type + "\n";
    if (results > 0) {
        text += "   ResultsPositions:\n";
    }
    for (int position = 1; position <= results; ++position) {
        text += "   - Position: " + std::to_string(position) +
                "\n     CarIdx: " + std::to_string(position) +
                "\n     LapsComplete: 3\n     LastTime: 91.2345\n";
    }
    return text;
}

std::string sessionText(const std::string& mode, const std::string& type, int results, int cars) {
    return "---\nWeekendInfo:\n TrackDisplayName: Hill Ring\n TrackConfigName: Long\n"
           " TrackLength: 4.60 km\n TrackNorthOffset: 0.5 rad\n SessionID: 12\n SubSessionID: 34\n"
           " SimMode: " +
           mode + "\n WeekendOptions:\n  NumStarters: 0\n" + sessions(type, results) +
           drivers(cars) +
           "CarSetup:\n UpdateCount: 1\n Chassis:\n  Rear:\n   FuelLevel: 40.0 L\n...\n";
}

// --- Blocks ---

TestBlock usualBlock(const std::string& text) {
    TestBlock block;
    block.addVariable("SessionTime", irsdk_double, 1, "s");
    block.addVariableAt(kSessionTickOffset, "SessionTick", irsdk_int);
    block.addVariable("Lap", irsdk_int);
    block.addVariable("LapDistPct", irsdk_float, 1, "%");
    block.addVariable("LapCurrentLapTime", irsdk_float, 1, "s");
    block.addVariable("LapLastLapTime", irsdk_float, 1, "s");
    block.addVariable("SessionNum", irsdk_int);
    block.addVariable("SessionState", irsdk_int);
    block.addVariable("SessionTimeRemain", irsdk_double, 1, "s");
    block.addVariable("ReplayPlaySpeed", irsdk_int);
    block.addVariable("EngineWarnings", irsdk_bitField);
    block.addVariable("IsOnTrack", irsdk_bool);
    block.addVariable("PlayerCarInPitStall", irsdk_bool);
    block.addVariable("OnPitRoad", irsdk_bool);
    block.addVariable("Text", irsdk_char, 5);
    block.addVariable("CarIdxLapCompleted", irsdk_int, kSlots);
    block.addVariable("CarIdxLapDistPct", irsdk_float, kSlots, "%");
    block.addVariable("CarIdxLastLapTime", irsdk_float, kSlots, "s");
    block.addVariable("CarIdxOnPitRoad", irsdk_bool, kSlots);
    block.addVariable("CarIdxLonger", irsdk_double, kSlots + 8);
    block.addVariable("Later", 9, 2);
    block.setSessionText(text);
    constexpr double kMiddle = 0.5;
    block.set("IsOnTrack", 1);
    block.set("LapDistPct", kMiddle);
    block.set("SessionState", 4);
    block.set("ReplayPlaySpeed", 1);
    block.setAll("CarIdxLapDistPct", -1.0);
    for (const int car : {0, 1, 2, 3}) {
        block.set("CarIdxLapDistPct", kMiddle, car);
    }
    return block;
}

Seed seedOf(const std::string& name, TestBlock& block,
            const std::array<int, kScriptLength>& script) {
    for (int buffer = 0; buffer < block.header().numBuf; ++buffer) {
        block.complete(buffer, 10 + buffer);
    }
    for (std::size_t i = 0; i < script.size(); ++i) {
        block.poke(kScriptOffset + i, static_cast<unsigned char>(script[i]));
    }
    return {name, std::string(block.bytes().begin(), block.bytes().end())};
}

int step(BlockAction action, int argument = 0) {
    return static_cast<int>(action) + kBlockActions * argument;
}

std::vector<Seed> blockSeeds() {
    using enum BlockAction;
    const std::string practice = sessionText("full", "Practice", 2, 4);
    const std::string race = sessionText("full", "Race", 3, 4);
    const std::string replay = sessionText("replay", "Practice", 0, 4);
    // Words of a snapshot: the own lap, the running time, the state of the session.
    constexpr int kLap = 3;
    constexpr int kLapTime = 5;
    constexpr int kSessionState = 8;
    std::vector<Seed> seeds;
    TestBlock block = usualBlock(practice);
    seeds.push_back(seedOf("ticks", block, {}));
    seeds.push_back(
        seedOf("texts", block, {step(MoveSessionCounter), 0, step(MoveSessionCounter)}));
    seeds.push_back(seedOf("stops", block, {0, step(StopAndStart), 0, step(JumpBack, 20), 0}));
    seeds.push_back(
        seedOf("cuts", block, {0, step(CutOff, 0), 0, step(CutOff, 1), step(CutOff, 16)}));
    seeds.push_back(seedOf("reconnects", block, {0, step(Reconnect), 0, step(Reconnect), 0}));
    seeds.push_back(seedOf("header", block,
                           {step(ChangeHeader, 5), step(ChangeHeader, 6), step(ChangeHeader, 8),
                            step(ChangeHeader, 9), step(ChangeHeader, 13)}));
    block = usualBlock(race);
    block.setBufferCount(4);
    seeds.push_back(seedOf("laps", block,
                           {0, step(ChangeReading, kLap), 0, step(ChangeReading, kLapTime),
                            step(ChangeReading, kSessionState), step(ChangeReading, kLap), 0, 0}));
    block = usualBlock(replay);
    block.setBufferCount(1);
    seeds.push_back(seedOf("replay", block, {0, step(ChangeReading, kLap), 0, 0}));
    TestBlock bare;
    seeds.push_back(seedOf("bare", bare, {}));
    seeds.push_back({"header-only", seeds.back().bytes.substr(0, sizeof(irsdk_header))});
    return seeds;
}

// --- Session texts ---

std::vector<Seed> sessionTextSeeds() {
    return {{"practice", sessionText("full", "Practice", 4, 6)},
            {"race", sessionText("full", "Race", 10, 12)},
            {"replay", sessionText("replay", "Offline testing", 0, 1)},
            {"line-ends", "---\r\nA:\r\n B: 1\r\n - C: 2\r\n"},
            {"nested", "---\nA:\n B:\n  C:\n   - D: 1\n     E:\n      F: 2\nG: 3: 4\n\n-\n :\n"},
            {"empty", "---\n...\n"}};
}

// --- Drives ---

/** A step as the target reads it: its kind and its argument. */
char driveStep(int kind, int argument = 0) {
    constexpr int kKinds = 16;
    return static_cast<char>(static_cast<unsigned char>(kind + kKinds * argument));
}

std::string drive(int mode, int laps) {
    constexpr int kTicksPerLap = 14;
    std::string bytes(1, static_cast<char>(mode));
    bytes += driveStep(5, 7);  // on the track, on pit road
    bytes += driveStep(0);
    bytes += driveStep(5, 1);  // on the track
    for (int lap = 0; lap < laps; ++lap) {
        for (int tick = 0; tick < kTicksPerLap; ++tick) {
            bytes += driveStep(0, 6);
        }
        bytes += driveStep(10);
        bytes += '\x70';
        for (int car = 0; car < 3; ++car) {
            bytes += driveStep(4, car);
            bytes += '\x68';
        }
    }
    bytes += driveStep(5, 4);  // into the pits
    bytes += driveStep(6, 1);
    return bytes;
}

std::vector<Seed> tickSeeds() {
    std::string race = drive(0, 1);
    race.insert(1, {driveStep(15, 0), '\0', driveStep(8, 3), driveStep(0, 2), driveStep(8, 4)});
    std::string hostile(1, '\0');
    for (const int kind : {1, 2, 9, 10, 4, 12}) {
        for (int number = 0xF8; number <= 0xFF; ++number) {
            hostile += driveStep(kind, 1);
            hostile += static_cast<char>(static_cast<unsigned char>(number));
            hostile += driveStep(0, 8);
        }
    }
    std::string changes = drive(0, 1);
    for (const int kind : {11, 7, 13, 14, 3}) {
        changes += driveStep(kind, 2);
        changes += driveStep(0, 3);
    }
    for (int what = 0; what < 6; ++what) {
        changes += driveStep(15, what);
        changes += '\x21';
        changes += driveStep(0, 3);
    }
    return {{"practice", drive(0, 3)},    {"replay", drive(1, 2)}, {"from-disk", drive(2, 2)},
            {"disk-replay", drive(3, 2)}, {"race", race},          {"hostile", hostile},
            {"changes", changes}};
}

// --- Streams ---

Seed streamSeed(const std::string& name, StreamRecord record, int version,
                const QByteArray& bytes) {
    const int choice = static_cast<int>(record) + kStreamRecords * version;
    return {name, std::string(1, static_cast<char>(choice)) + bytes.toStdString()};
}

std::vector<Seed> streamSeeds() {
    TLM::SDK::LivePluginInfo info;
    info.setPluginName(QStringLiteral("P"));
    info.setSourceName(QStringLiteral("Src"));
    info.cars = {filledCar(QStringLiteral("0")), filledCar(QStringLiteral("1"))};
    QList<TLM::SDK::Sample> samples(2);
    for (TLM::SDK::Sample& sample : samples) {
        static_cast<TLM::SDK::CarInfo&>(sample) = filledCar();
    }
    const QByteArray car = filledCarBytes();
    const QByteArray oddCar = WireBytes()
                                  .u32(3)
                                  .nullTextVariant(QStringLiteral("carId"))
                                  .intVariant(QStringLiteral("carName"), -1)
                                  .boolVariant(QStringLiteral("status"), true)
                                  .bytes();
    return {streamSeed("car", StreamRecord::CarInfo, 0, car),
            streamSeed("car-old-stream", StreamRecord::CarInfo, 2, car),
            streamSeed("odd-car", StreamRecord::CarInfo, 1, oddCar),
            streamSeed("empty-car", StreamRecord::CarInfo, 0, WireBytes().u32(0).bytes()),
            streamSeed("sample", StreamRecord::Sample, 0, car),
            streamSeed("header", StreamRecord::LapHeader, 1, car),
            streamSeed("info", StreamRecord::LivePluginInfo, 0, written(info)),
            streamSeed("samples", StreamRecord::SampleList, 0, written(samples)),
            streamSeed("loaded-samples", StreamRecord::LoadedList, 0, written(samples))};
}

}  // namespace

const std::vector<std::string>& targetNames() {
    static const std::vector<std::string> kNames{"block", "sessiontext", "ticks", "streams"};
    return kNames;
}

std::vector<Seed> seedsOf(std::string_view target) {
    if (target == "block") {
        return blockSeeds();
    }
    if (target == "sessiontext") {
        return sessionTextSeeds();
    }
    if (target == "ticks") {
        return tickSeeds();
    }
    if (target == "streams") {
        return streamSeeds();
    }
    return {};
}

}  // namespace fuzz
