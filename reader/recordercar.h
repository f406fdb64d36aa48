#pragma once

#include "reader/carsample.h"
#include "reader/laprecorder.h"
#include "reader/recordersample.h"

#include <QString>

namespace reader {

/**
 * Everything the lap recorder knows about the car of one slot: its state in this tick and in the
 * one before, its raw values, the lap being recorded, the lap that has begun after it, and the
 * rules by which a car's status moves on and a lap ends.
 *
 * There are no errors here: readings that are missing or senseless leave the status as it is and
 * the lap open. Copies share their laps with the original.
 */
class RecorderCar {
public:
    /** The tick in progress. */
    RecorderSample current;

    /** The end of the tick before. */
    RecorderSample previous;

    /** The car's raw values of the tick, by lower-case variable name. */
    CarSample sample;

    /** The lap being recorded; once it is closed, the lap that the host receives. */
    LapRecorder lap;

    /** Samples taken after the line while `lap` is not closed yet. */
    LapRecorder nextLap;

    QString driverName;  // empty while no driver sits in the car: such a car is not recorded
    QString teamName;
    QString carName;
    QString className;
    bool detailedTelemetry = false;  // the user's own car
    bool diskLoading = false;        // the values come from a recording on disk
    bool lapReady = false;           // `lap` is closed and waits to be collected

    /** A new stint: a new id, one more stint, no lap in it yet. */
    void startStint();

    /**
     * Makes the lap that has begun after the line the lap being recorded. Empties the raw values
     * first: a lap that starts in mid-tick begins without the values read for that tick, because
     * they were taken before the lap began.
     */
    void startLap();

    /** Marks the lap ready, and learns from it how long the next ones may become. */
    void closeLap();

    /**
     * Lets go of a ready lap, and puts an empty one in its place: whoever was handed the lap may by
     * now be using it in another thread.
     */
    void leaveReadyLap();

    /** Rolls this tick's state over into the last one's and starts the lap after a closed one. */
    void prepareTick();

    /**
     * Moves the status on. The stall counts before the pit road, that before the track; none of
     * them leaves the status as it is. Only a car on the track gets a new `current.lapCompleted`:
     * in the pits the flag keeps the value of the tick before, and the lap is ended by it once
     * more.
     */
    void updateCarStatus(bool inPitStall, bool onPitRoad, bool onTrack);

    /** Whether the lap is driven to its end, judged by `current` and `previous` alone. */
    [[nodiscard]] bool isLapCompleted() const;

    /** Whether the car left the track or the world during its lap. */
    [[nodiscard]] bool isLapAborted() const;

private:
    enum class OnTrackStatus { Settled, Waiting };

    [[nodiscard]] double lapDistance() const;
    [[nodiscard]] bool isBeforeRaceStart() const;

    /**
     * Made for the start of a race, where the out lap is the formation's. It also holds for whoever
     * leaves the pits in mid-race: up to the grid's part of the lap such a car is taken for one on
     * a flying lap from its second tick on. It stays so: hosts know races recorded so.
     */
    [[nodiscard]] bool isRacingOnOutLap() const;
    [[nodiscard]] bool isOwnLapCompleted() const;

    OnTrackStatus updateOnTrackStatus();
    OnTrackStatus waitForStartOrBeginOutLap(double lastDistanceOfOutLap);
    OnTrackStatus beginOutLap();
    OnTrackStatus waitForStart();
    void updateLapCompleted();
};

}  // namespace reader

using reader::RecorderCar;
