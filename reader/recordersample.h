#pragma once

#include "sdk/carstatus.h"

#include <QString>
#include <QUuid>
#include <QtGlobal>

namespace reader {

/**
 * What the recorder knows about one car at one tick. A plain record: the reader keeps one for the
 * tick in progress and one for the tick before it and decides by comparing the two, so that every
 * field a decision needs is here and is copied whole, once a tick.
 *
 * Numbers that are not yet known are -1.
 */
struct RecorderSample {
    QUuid lapId;    // of the lap in progress; a new random id at each lap start
    QUuid stintId;  // of the stint in progress; a new random id at each stint start
    QString spareText;
    qint32 lap = -1;            // the simulator's lap number of the car
    qint32 lapInStint = -1;     // laps started in this stint
    qint32 stintInSession = 0;  // stints started
    // Nothing sets it, so the restart test that compares it never fires; it stays so that the test
    // works the day a source delivers a session number for each car.
    qint32 sessionNum = -1;
    float lapDistPct = -1.0F;         // lap distance as a fraction of the lap, 0 to 1
    float lapCurrentLapTime = -1.0F;  // running lap time in seconds, own car only
    float lastLapTime = -1.0F;        // last lap time in seconds
    qint32 spareInt1 = -1;
    qint32 spareInt2 = -1;
    qint32 sessionState = 0;  // the simulator's: 1 to 3 before a race start, 4 racing
    TLM::SDK::CarStatus status = TLM::SDK::CarStatus::Undefined;
    qint32 sessionType = -1;    // in the numbering of TLM::SDK::Session
    bool lapCompleted = false;  // the lap was found complete in this tick
    bool lapAborted = false;    // the lap was found aborted in this tick
    bool spareFlag = false;
    quint64 sessionTick = 0;  // the simulator's tick counter of these values
};

}  // namespace reader

using reader::RecorderSample;
