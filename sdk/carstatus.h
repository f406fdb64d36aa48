#pragma once

#include <QString>

#include <cstdint>

namespace TLM::SDK {

/** The state of a car. The numbers travel in streams and are fixed. */
enum class CarStatus : std::int32_t {
    Undefined = -1,       // not known yet
    NotConnected = 0,     // no driver is connected for this car
    NotInWorld = 1,       // the driver is there, the car is not
    WaitingForStart = 2,  // on the grid or in formation, before the start
    InPitStall = 3,       // standing in its pit stall
    InPitlane = 4,        // between pit entry and exit
    OutLap = 5,           // on track, on the lap that began in the pits
    FlyingLap = 6,        // on track, on a lap that began at the line
    OnTrack = 7,          // on track, kind of lap not known
    OffTrack = 8,         // off the track
};

/** The status as a text to show, "In pit stall"; a null text for a number that is no status. */
QString carStatusToString(CarStatus status);

}  // namespace TLM::SDK
