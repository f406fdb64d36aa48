#pragma once

#include "reader/irtelemetryreader.h"
#include "sdk/lap.h"
#include "tests/support/printqt.h"
#include "tests/support/testblock.h"

#include <QByteArray>
#include <QList>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <string>
#include <vector>

namespace readertest {

using LapPointer = QSharedPointer<TLM::SDK::Lap>;

/** Slots that the tests use: the own car is not slot 0, and has a neighbour on either side. */
inline constexpr int kEarlierCar = 1;
inline constexpr int kOwnCar = 3;
inline constexpr int kLaterCar = 7;

/** What a lap time that does not count is replaced by. */
inline constexpr float kNoLapTime = 3599.0F;

/** A session text of these lines, with the document's start before and a line break behind them. */
QByteArray yaml(std::initializer_list<QByteArray> lines);

/** One place of a session's results. */
struct Result {
    QByteArray car;
    QByteArray lapsComplete;
    QByteArray lastTime;
};

/** The session text as the simulator writes it, of the facts that a test is about. */
struct SessionText {
    QByteArray simMode = "full";  // a text without weekend when empty
    QByteArray sessionId = "12345";
    QByteArray subSessionId = "678";
    QByteArray trackLength = "1.0 km";
    QByteArray ownCar = QByteArray::number(kOwnCar);
    std::map<int, QByteArray> drivers = {
        {kEarlierCar, "Earlier Driver"}, {kOwnCar, "Own Driver"}, {kLaterCar, "Later Driver"}};
    std::vector<QByteArray> sessionTypes = {"Practice"};
    std::map<int, std::vector<Result>> results;  // by session number, the winner first

    [[nodiscard]] QByteArray toYaml() const;
};

/**
 * A reader and the simulator that feeds it: tests say where the cars are, tick, and look at the
 * laps that were handed over. Nothing but the reader's public calls of one tick is used.
 *
 * At the start the own car is in its stall and every other car is out of the world.
 */
class Drive {
public:
    /** `types` holds the variables whose type is another than the simulator's. */
    explicit Drive(const std::map<std::string, int>& types = {});

    iRTelemetryReader reader;
    testsupport::TestBlock block;
    SessionText session;

    /** Every lap handed over, the empty ones too, by slot in the order of their ticks. */
    std::map<int, std::vector<LapPointer>> laps;

    /** Hands the session text to the reader. */
    void publishSession();

    /** One tick: the clock moves on, the reader works, ready laps are collected. */
    void tick();
    void tick(int times);

    /** The parts of a tick, for tests that act between them. */
    void advanceClock();
    void beginTick();
    void takeSnapshot();
    void endTick();

    /** What the plugin does with every car when its connection ends. */
    void closeOpenLaps();

    void putOwnInStall();
    void putOwnOnPitRoad(double lapDistance);
    void putOwnOnTrack(double lapDistance, double lapTime);
    void putOther(int car, double lapDistance);
    void putOtherOnPitRoad(int car, double lapDistance);
    void putOtherOutOfWorld(int car);

    /** From the stall over pit road onto the track: the out lap runs when this returns. */
    void leavePits();

    /** Own car along the lap to just before the line, without crossing it. */
    void driveOwnToLine();

    /** Own car over the line in one tick: the next lap's number, the lap time just driven. */
    void crossOwnLine(double lastLapTime);

    /** The two above. */
    void driveOwnLap(double lastLapTime);

    /** Another car along the lap and over the line; the results do not know it yet. */
    void driveOtherToLine(int car);

    /** Says the other car's finished laps and its last lap time as the per-car arrays do. */
    void setFinishedLaps(int car, int laps, double lastLapTime);

    [[nodiscard]] const RecorderCar& car(int index) const { return reader.recorderCar(index); }
    [[nodiscard]] const RecorderCar& own() const { return reader.recorderCar(kOwnCar); }
    [[nodiscard]] TLM::SDK::CarStatus status(int index) const { return car(index).current.status; }

    /** The laps of a slot that have channels. */
    [[nodiscard]] std::vector<LapPointer> drivenLaps(int index) const;

    /** The newest of them; a failure of the test and an empty lap when there is none. */
    [[nodiscard]] LapPointer lastDrivenLap(int index) const;

private:
    int m_tick = 0;
    int m_ownLap = 0;
};

class ReaderTest : public ::testing::Test {
protected:
    Drive drive;
};

/** The entries of a recorded channel; none when there is no such channel. */
QList<double> samplesOf(const LapPointer& lap, const QString& channel);

/** The unit of a recorded channel; a null text when there is no such channel. */
QString unitOf(const LapPointer& lap, const QString& channel);

/** A channel of these entries, recorded in `lap`. */
void record(const LapPointer& lap, const QString& name, const QList<double>& samples,
            const QString& unit = QString());

/** The lap time in milliseconds. */
int lapTimeOf(const LapPointer& lap);

/** Collects the debug lines written during its life; they go nowhere else. */
class DebugLines {
public:
    DebugLines();
    ~DebugLines();
    DebugLines(const DebugLines&) = delete;
    DebugLines& operator=(const DebugLines&) = delete;

    [[nodiscard]] static const QStringList& lines();
};

}  // namespace readertest
