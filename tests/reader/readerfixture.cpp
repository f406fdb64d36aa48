#include "tests/reader/readerfixture.h"

#include <QDebug>
#include <QTime>

#include <algorithm>
#include <iterator>

namespace readertest {

namespace {

// A binary fraction of a second, so that sums of steps are exact.
constexpr double kSecondsPerTick = 0.0625;

constexpr int kSlots = 64;
constexpr double kOutOfWorld = -1.0;

QStringList& collectedLines() {
    static QStringList lines;
    return lines;
}

QtMessageHandler& formerHandler() {
    static QtMessageHandler handler = nullptr;
    return handler;
}

void collect(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    if (type == QtDebugMsg) {
        collectedLines().append(text);
    }
}

QByteArray weekendSection(const SessionText& session) {
    if (session.simMode.isEmpty()) {
        return {};
    }
    return "WeekendInfo:\n TrackDisplayName: Testring\n TrackLength: " + session.trackLength +
           "\n SessionID: " + session.sessionId + "\n SubSessionID: " + session.subSessionId +
           "\n SimMode: " + session.simMode + "\n";
}

QByteArray sessionSection(const SessionText& session) {
    QByteArray text = "SessionInfo:\n Sessions:\n";
    int number = 0;
    for (const QByteArray& type : session.sessionTypes) {
        text += " - SessionNum: " + QByteArray::number(number) + "\n   SessionType: " + type + "\n";
        const auto results = session.results.find(number);
        if (results != session.results.end()) {
            text += "   ResultsPositions:\n";
            int position = 1;
            for (const Result& result : results->second) {
                text += "   - Position: " + QByteArray::number(position) +
                        "\n     CarIdx: " + result.car +
                        "\n     LapsComplete: " + result.lapsComplete +
                        "\n     LastTime: " + result.lastTime + "\n";
                ++position;
            }
        }
        ++number;
    }
    return text;
}

QByteArray driverSection(const SessionText& session) {
    QByteArray text = "DriverInfo:\n DriverCarIdx: " + session.ownCar + "\n Drivers:\n";
    for (const auto& [index, name] : session.drivers) {
        text += " - CarIdx: " + QByteArray::number(index) + "\n   UserName: " + name + "\n";
    }
    return text;
}

}  // namespace

QByteArray yaml(std::initializer_list<QByteArray> lines) {
    QByteArray text = "---\n";
    for (const QByteArray& line : lines) {
        text += line + "\n";
    }
    return text;
}

QByteArray SessionText::toYaml() const {
    return "---\n" + weekendSection(*this) + sessionSection(*this) + driverSection(*this) + "...\n";
}

Drive::Drive(const std::map<std::string, int>& types) {
    struct Variable {
        std::string name;
        int type;
        int count;
        std::string unit;
    };
    const std::vector<Variable> variables = {
        {"SessionTime", irsdk_double, 1, "s"},
        {"SessionTimeRemain", irsdk_double, 1, "s"},
        {"SessionTick", irsdk_int, 1, ""},
        {"SessionNum", irsdk_int, 1, ""},
        {"SessionState", irsdk_int, 1, ""},
        {"IsOnTrack", irsdk_bool, 1, ""},
        {"PlayerCarInPitStall", irsdk_bool, 1, ""},
        {"OnPitRoad", irsdk_bool, 1, ""},
        {"Lap", irsdk_int, 1, ""},
        {"LapDistPct", irsdk_float, 1, "%"},
        {"LapCurrentLapTime", irsdk_float, 1, "s"},
        {"LapLastLapTime", irsdk_float, 1, "s"},
        {"ReplayPlaySpeed", irsdk_int, 1, ""},
        {"FuelLevel", irsdk_float, 1, "l"},
        {"CarIdxLapDistPct", irsdk_float, kSlots, "%"},
        {"CarIdxOnPitRoad", irsdk_bool, kSlots, ""},
        {"CarIdxLapCompleted", irsdk_int, kSlots, ""},
        {"CarIdxLastLapTime", irsdk_float, kSlots, "s"},
    };
    for (const Variable& variable : variables) {
        const auto other = types.find(variable.name);
        block.addVariable(variable.name, other == types.end() ? variable.type : other->second,
                          variable.count, variable.unit);
    }
    block.setAll("CarIdxLapDistPct", kOutOfWorld);
    block.set("ReplayPlaySpeed", 1);
    block.set("FuelLevel", 40.0);
    putOwnInStall();
}

Drive& Drive::publishSession() {
    reader.setYaml(session.toYaml().constData());
    return *this;
}

Drive& Drive::publishResults(const std::vector<Result>& results) {
    session.results = {{0, results}};
    return publishSession();
}

Drive& Drive::tick(int times) {
    for (int i = 0; i < times; ++i) {
        advanceClock();
        repeatTick();
    }
    return *this;
}

Drive& Drive::repeatTick() {
    beginTick();
    takeSnapshot();
    endTick();
    return *this;
}

void Drive::advanceClock() {
    ++m_tick;
    block.set("SessionTick", m_tick);
    block.set("SessionTime", 100.0 + kSecondsPerTick * m_tick);
    block.set("SessionTimeRemain", 60.0 - kSecondsPerTick * m_tick);
}

void Drive::beginTick() {
    reader.updateCarList();
    reader.prepareTick();
}

void Drive::takeSnapshot() {
    reader.getRawData(&block.header(), block.varHeaders(), block.snapshot(),
                      block.snapshotLength());
}

void Drive::endTick() {
    reader.processData();
    for (int slot = 0; slot < kSlots; ++slot) {
        if (reader.isLapReady(slot)) {
            laps[slot].push_back(reader.lap(slot));
        }
    }
}

Drive& Drive::putOwnInStall() {
    block.set("IsOnTrack", 0);
    block.set("PlayerCarInPitStall", 1);
    block.set("OnPitRoad", 1);
    block.set("LapDistPct", 0.0);
    block.set("LapCurrentLapTime", 0.0);
    return putOtherOnPitRoad(kOwnCar, 0.0);
}

Drive& Drive::putOwnOnPitRoad(double lapDistance) {
    block.set("IsOnTrack", 1);
    block.set("PlayerCarInPitStall", 0);
    block.set("OnPitRoad", 1);
    block.set("LapDistPct", lapDistance);
    return putOtherOnPitRoad(kOwnCar, lapDistance);
}

Drive& Drive::putOwnOnTrack(double lapDistance, double lapTime) {
    block.set("IsOnTrack", 1);
    block.set("PlayerCarInPitStall", 0);
    block.set("OnPitRoad", 0);
    block.set("LapDistPct", lapDistance);
    block.set("LapCurrentLapTime", lapTime);
    return putOther(kOwnCar, lapDistance);
}

Drive& Drive::putOther(int index, double lapDistance) {
    block.set("CarIdxLapDistPct", lapDistance, index);
    block.set("CarIdxOnPitRoad", 0, index);
    return *this;
}

Drive& Drive::putOtherOnPitRoad(int index, double lapDistance) {
    block.set("CarIdxLapDistPct", lapDistance, index);
    block.set("CarIdxOnPitRoad", 1, index);
    return *this;
}

Drive& Drive::putOtherOutOfWorld(int index) {
    return putOther(index, kOutOfWorld);
}

Drive& Drive::leavePits() {
    putOwnInStall().tick();
    putOwnOnPitRoad(0.02).tick();
    return putOwnOnTrack(0.05, 4.0).tick();
}

Drive& Drive::driveOwnToLine() {
    for (int tenth = 1; tenth <= 9; ++tenth) {
        putOwnOnTrack(0.1 * tenth, 9.0 * tenth).tick();
    }
    return putOwnOnTrack(0.99, 89.0).tick();
}

Drive& Drive::crossOwnLine(double lastLapTime) {
    ++m_ownLap;
    block.set("Lap", m_ownLap);
    block.set("LapLastLapTime", lastLapTime);
    block.set("CarIdxLastLapTime", lastLapTime, kOwnCar);
    return putOwnOnTrack(0.005, 0.4).tick();
}

Drive& Drive::driveOwnLap(double lastLapTime) {
    return driveOwnToLine().crossOwnLine(lastLapTime);
}

Drive& Drive::driveOtherToLine(int index) {
    for (int tenth = 1; tenth <= 9; ++tenth) {
        putOther(index, 0.1 * tenth).tick();
    }
    putOther(index, 0.99).tick();
    return putOther(index, 0.005).tick();
}

Drive& Drive::setFinishedLaps(int index, int finished, double lastLapTime) {
    block.set("CarIdxLapCompleted", finished, index);
    block.set("CarIdxLastLapTime", lastLapTime, index);
    return *this;
}

std::vector<LapPointer> Drive::drivenLaps(int index) const {
    std::vector<LapPointer> driven;
    const auto found = laps.find(index);
    if (found != laps.end()) {
        std::copy_if(found->second.begin(), found->second.end(), std::back_inserter(driven),
                     [](const LapPointer& lap) { return !lap->isEmpty(); });
    }
    return driven;
}

LapPointer Drive::lastDrivenLap(int index) const {
    const std::vector<LapPointer> driven = drivenLaps(index);
    if (driven.empty()) {
        ADD_FAILURE() << "no lap of slot " << index << " was handed over";
        return LapPointer::create();
    }
    return driven.back();
}

QList<double> samplesOf(const LapPointer& lap, const QString& channel) {
    const auto found = lap->channel(channel);
    return found ? found->samples : QList<double>();
}

QString unitOf(const LapPointer& lap, const QString& channel) {
    const auto found = lap->channel(channel);
    return found ? found->unit() : QString();
}

void record(const LapPointer& lap, const QString& name, const QList<double>& samples,
            const QString& unit) {
    const auto channel = QSharedPointer<TLM::SDK::Channel>::create();
    channel->samples = samples;
    channel->setUnit(unit);
    lap->addChannel(channel, name);
}

int lapTimeOf(const LapPointer& lap) {
    return lap->lapTime().msecsSinceStartOfDay();
}

DebugLines::DebugLines() {
    collectedLines().clear();
    formerHandler() = qInstallMessageHandler(collect);
}

DebugLines::~DebugLines() {
    qInstallMessageHandler(formerHandler());
}

const QStringList& DebugLines::lines() {
    return collectedLines();
}

}  // namespace readertest
