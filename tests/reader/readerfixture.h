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

/** Slots that the tests use: the own car is not in slot 0, and has other cars on both sides. */
inline constexpr int kEarlierCar = 1;
inline constexpr int kOwnCar = 3;
inline constexpr int kLaterCar = 7;

/** Replaces a lap time that does not count. */
inline constexpr float kNoLapTime = 3599.0F;

/** A session text of these lines: the document's start, and a line break after each line. */
QByteArray yaml(std::initializer_list<QByteArray> lines);

/** One place of a session's results. */
struct Result {
    QByteArray car;
    QByteArray lapsComplete;
    QByteArray lastTime;
};

/** A session text as the simulator writes it, with the facts that a test is about. */
struct SessionText {
    QByteArray simMode = "full";  // if empty, the text has no weekend
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
 * A reader and its simulator: tests place the cars, tick, and check the laps that were handed over.
 * It only uses the reader's public calls of a tick. Steps of a drive can be chained.
 *
 * At the start the own car is in its stall and every other car is out of the world.
 */
class Drive {
public:
    /** `types` are the variables whose type differs from the simulator's. */
    explicit Drive(const std::map<std::string, int>& types = {});

    iRTelemetryReader reader;
    testsupport::TestBlock block;
    SessionText session;

    /** All laps handed over, including empty ones, by slot, in the order of their ticks. */
    std::map<int, std::vector<LapPointer>> laps;

    /** Hands the session text to the reader. */
    Drive& publishSession();

    /** The same with these results of the first session. */
    Drive& publishResults(const std::vector<Result>& results);

    /** One tick: advances the clock, runs the reader, and collects the laps that are ready. */
    Drive& tick(int times = 1);

    /** A tick without advancing the clock. */
    Drive& repeatTick();

    /** The parts of a tick, for tests that act between them. */
    void advanceClock();
    void beginTick();
    void takeSnapshot();
    void endTick();

    Drive& putOwnInStall();
    Drive& putOwnOnPitRoad(double lapDistance);
    Drive& putOwnOnTrack(double lapDistance, double lapTime);
    Drive& putOther(int car, double lapDistance);
    Drive& putOtherOnPitRoad(int car, double lapDistance);
    Drive& putOtherOutOfWorld(int car);

    /** From the stall over pit road onto the track; begins the out lap. */
    Drive& leavePits();

    /** Drives the own car to just before the line. */
    Drive& driveOwnToLine();

    /** Drives the own car over the line in one tick, with a new lap number and this lap time. */
    Drive& crossOwnLine(double lastLapTime);

    /** The two above. */
    Drive& driveOwnLap(double lastLapTime);

    /** Drives another car along the lap and over the line; the results do not have the lap yet. */
    Drive& driveOtherToLine(int car);

    /** Sets another car's finished laps and last lap time in the per-car arrays. */
    Drive& setFinishedLaps(int car, int laps, double lastLapTime);

    [[nodiscard]] const RecorderCar& car(int index) const { return reader.recorderCar(index); }
    [[nodiscard]] const RecorderCar& own() const { return reader.recorderCar(kOwnCar); }
    [[nodiscard]] TLM::SDK::CarStatus status(int index) const { return car(index).current.status; }

    /** The laps of a slot that have channels. */
    [[nodiscard]] std::vector<LapPointer> drivenLaps(int index) const;

    /** The newest of them; if there is none, the test fails and gets an empty lap. */
    [[nodiscard]] LapPointer lastDrivenLap(int index) const;

private:
    int m_tick = 0;
    int m_ownLap = 0;
};

class ReaderTest : public ::testing::Test {
protected:
    Drive drive;
};

/** The entries of a recorded channel; empty if there is no such channel. */
QList<double> samplesOf(const LapPointer& lap, const QString& channel);

/** The unit of a recorded channel; a null text if there is no such channel. */
QString unitOf(const LapPointer& lap, const QString& channel);

/** Adds a recorded channel to `lap`. */
void record(const LapPointer& lap, const QString& name, const QList<double>& samples,
            const QString& unit = QString());

/** The lap time in milliseconds. */
int lapTimeOf(const LapPointer& lap);

/** Captures the debug lines that are written while it exists. */
class DebugLines {
public:
    DebugLines();
    ~DebugLines();
    DebugLines(const DebugLines&) = delete;
    DebugLines& operator=(const DebugLines&) = delete;

    [[nodiscard]] static const QStringList& lines();
};

}  // namespace readertest
