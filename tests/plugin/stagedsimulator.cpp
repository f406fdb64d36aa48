#include "tests/plugin/stagedsimulator.h"

#include <algorithm>
#include <cstddef>

using testsupport::TestBlock;

namespace {

constexpr int kCarCount = 64;
constexpr int kBufferCount = 3;
constexpr std::size_t kRoomForSession = 8192;
constexpr double kTickSeconds = 1.0 / 60;

// The time between two snapshots of the running simulator, in microseconds.
const std::string kRunningPace = "2000";
const std::string kHastyPace = "100";

std::string runCommand(const std::string& pace) {
    return "every " + pace + ' ' + std::to_string(kBufferCount);
}

std::size_t tickCountOffset(int buffer) {
    return offsetof(irsdk_header, varBuf) +
           static_cast<std::size_t>(buffer) * sizeof(irsdk_varBuf) +
           offsetof(irsdk_varBuf, tickCount);
}

}  // namespace

std::string StagedSession::text() const {
    std::string text =
        "---\nWeekendInfo:\n TrackDisplayName: Hill Ring\n SessionID: 12\n"
        " SubSessionID: 34\n SimMode: " +
        simMode + (trackLength.empty() ? "" : "\n TrackLength: " + trackLength) +
        "\nSessionInfo:\n Sessions:\n - SessionNum: 0\n   SessionType: " + type +
        "\nDriverInfo:\n DriverCarIdx: " + std::to_string(ownCar) + "\n Drivers:\n";
    for (const Driver& driver : drivers) {
        text += " - CarIdx: " + std::to_string(driver.car) + "\n   UserName: " + driver.name +
                "\n   TeamName: " + driver.name + " Team\n   CarScreenName: Roadster\n" +
                "   CarClassShortName: RDS\n";
    }
    return text + "...\n";
}

StagedSimulator::StagedSimulator() {
    addVariables();
    block.addVariable("Speed", irsdk_float, 1, "m/s");
    stageStart();
}

void StagedSimulator::layOut(int bufferLength) {
    constexpr int kLastVariableSize = 4;
    block = TestBlock();
    addVariables();
    block.addVariableAt(bufferLength - kLastVariableSize, "Speed", irsdk_float, 1, "m/s");
    block.setBufferLength(bufferLength);
    stageStart();
}

void StagedSimulator::addVariables() {
    block.setBufferCount(kBufferCount);
    block.setSessionCapacity(kRoomForSession);
    block.addVariable("SessionTime", irsdk_double, 1, "s");
    block.addVariable("SessionTick", irsdk_int);
    block.addVariable("SessionNum", irsdk_int);
    block.addVariable("SessionState", irsdk_int);
    block.addVariable("SessionTimeRemain", irsdk_double, 1, "s");
    block.addVariable("Lap", irsdk_int);
    block.addVariable("LapDistPct", irsdk_float, 1, "%");
    block.addVariable("LapLastLapTime", irsdk_float, 1, "s");
    block.addVariable("LapCurrentLapTime", irsdk_float, 1, "s");
    block.addVariable("IsOnTrack", irsdk_bool);
    block.addVariable("OnPitRoad", irsdk_bool);
    block.addVariable("PlayerCarInPitStall", irsdk_bool);
    block.addVariable("ReplayPlaySpeed", irsdk_int);
    block.addVariable("CarIdxLapCompleted", irsdk_int, kCarCount);
    block.addVariable("CarIdxLapDistPct", irsdk_float, kCarCount, "%");
    block.addVariable("CarIdxLastLapTime", irsdk_float, kCarCount, "s");
    block.addVariable("CarIdxOnPitRoad", irsdk_bool, kCarCount);
}

void StagedSimulator::stageStart() {
    constexpr double kMiddleOfTheLap = 0.5;
    constexpr double kOutOfTheWorld = -1.0;
    constexpr int kRacing = 4;
    block.setSessionText(StagedSession().text());
    block.set("SessionState", kRacing);
    block.set("IsOnTrack", 1);
    block.set("LapDistPct", kMiddleOfTheLap);
    block.setAll("CarIdxLapDistPct", kOutOfTheWorld);
    for (const int car : {kOwnCar, kFastCar, kSlowCar}) {
        block.set("CarIdxLapDistPct", kMiddleOfTheLap, car);
    }
}

void StagedSimulator::publish() {
    publisher.publish(block);
}

bool StagedSimulator::run() {
    const bool started = publisher.tryCommand(runCommand(kRunningPace));
    restoreBufferLength();
    return started;
}

void StagedSimulator::runWithoutData() {
    publisher.command(runCommand(kHastyPace));
    publisher.poke(offsetof(irsdk_header, bufferLength), 0);
}

void StagedSimulator::stop() {
    publisher.command("stop");
    restoreBufferLength();
}

void StagedSimulator::restoreBufferLength() {
    publisher.poke(offsetof(irsdk_header, bufferLength), block.header().bufferLength);
}

int StagedSimulator::newestTick() {
    int newest = 0;
    for (int buffer = 0; buffer < kBufferCount; ++buffer) {
        const std::string count =
            publisher.command("peek " + std::to_string(tickCountOffset(buffer)));
        newest = std::max(newest, std::stoi(count));
    }
    return newest;
}

void StagedSimulator::nextTick() {
    ++m_sessionTick;
    block.set("SessionTick", m_sessionTick);
    block.set("SessionTime", m_sessionTick * kTickSeconds);
    const int tick = newestTick() + 1;
    publisher.complete(tick % kBufferCount, tick, block);
}

void StagedSimulator::crossLine(int car) {
    constexpr double kLapTime = 90.5;
    const int laps = ++m_lapsOf[car];
    block.set("CarIdxLapCompleted", laps, car);
    block.set("CarIdxLastLapTime", kLapTime + car, car);
    if (car == kOwnCar) {
        block.set("Lap", laps);
        block.set("LapLastLapTime", kLapTime + car);
    }
}

void StagedSimulator::rewriteSession(const StagedSession& session) {
    const int counter = block.header().sessionInfoUpdate + 1;
    block.setSessionText(session.text());
    publisher.setSessionText(counter, session.text());
}

void StagedSimulator::overwriteSession(const StagedSession& session) {
    publisher.setSessionText(block.header().sessionInfoUpdate, session.text());
}

void StagedSimulator::setSessionUpdate(std::int32_t counter) {
    publisher.poke(offsetof(irsdk_header, sessionInfoUpdate), counter);
}
