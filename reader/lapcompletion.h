#pragma once

#include "reader/lapcourse.h"
#include "reader/recordercar.h"
#include "reader/samplingplan.h"
#include "sdk/lap.h"

#include <QString>
#include <QStringList>

namespace reader {

/** Puts what the recorder knows of a lap that ends into its header. */
void describeLap(RecorderCar& car, bool completed, bool diskLoading);

/** Whether a lap's course is derived. The own car's variables say it better, but for a replay. */
[[nodiscard]] bool needsCourse(bool isOwnCar, Feed feed);

/**
 * Derives the channels of a lap that the simulator does not deliver, anew where `course` is not
 * that of the lap's channels. Returns lines for the debug log.
 */
[[nodiscard]] QStringList deriveChannels(TLM::SDK::Lap& lap, LapCourse course, bool isOwnCar,
                                         Feed feed);

/**
 * Replaces the readings at the start of a channel that are left over from the lap before, back from
 * the first good one, by values that rise with lap distance.
 */
void repairBeginning(TLM::SDK::Lap& lap, const QString& name);

}  // namespace reader
