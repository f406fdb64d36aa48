#pragma once

#include "reader/recordercar.h"
#include "reader/samplingplan.h"
#include "reader/sessiondigest.h"

namespace reader {

/** What all cars of a tick have in common. */
struct TickContext {
    Feed feed;
    int ownCar;         // -1 while unknown
    int sessionNumber;  // of the own car, -1 while there is none
    bool isNewSession;  // since the last tick
    double trackKilometres;
    const SessionFacts& session;
};

/** What becomes of a car's lap in a tick. */
enum class LapOutcome {
    GoesOn,     // or has not begun
    Completed,  // is to be closed
    Aborted,    // is to be closed, not driven to its end
    Discarded,  // has been emptied, since it was played at another speed
};

/**
 * Moves a car's recording on by a tick: reads its place, lap number and times out of its sample,
 * moves its status on, and adds the sample to its lap. A lap that is to be closed is left as it is.
 */
[[nodiscard]] LapOutcome processCar(RecorderCar& car, int index, const TickContext& tick);

}  // namespace reader
