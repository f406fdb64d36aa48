#pragma once

#include "sdk/lap.h"
#include "sdk/lapheader.h"

#include <QString>
#include <QTime>

namespace rataip::host {

/**
 * False for a time that is not set, and for the 59:59.000 that the plugin writes for a lap
 * without a time of its own (an out lap, a lap not driven to its end).
 */
[[nodiscard]] bool hasLapTime(const QTime& time);

/** "1:23.456" (with the hour in front where there is one), or "no time". */
[[nodiscard]] QString lapTimeText(const QTime& time);

/** "out", "flying" or "unknown". */
[[nodiscard]] QString lapTypeText(TLM::SDK::LapType type);

/** "completed" or "not completed". */
[[nodiscard]] QString completionText(bool completed);

/** Recorded and calculated channels together. */
[[nodiscard]] qsizetype channelCount(const TLM::SDK::Lap& lap);

}  // namespace rataip::host
