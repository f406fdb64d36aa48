#pragma once

#include "sdk/lap.h"
#include "sdk/lapheader.h"

#include <QString>
#include <QTime>

namespace rataip::host {

/**
 * False for a time that is not set, and for 59:59.000, which the plugin writes for a lap without a
 * time (an out lap, an incomplete lap).
 */
[[nodiscard]] bool hasLapTime(const QTime& time);

/** "1:23.456", "1:01:23.456" from an hour on, or "no time". */
[[nodiscard]] QString lapTimeText(const QTime& time);

/** "out", "flying" or "unknown". */
[[nodiscard]] QString lapTypeText(TLM::SDK::LapType type);

/** "completed" or "not completed". */
[[nodiscard]] QString completionText(bool completed);

/** The number of recorded and calculated channels. */
[[nodiscard]] qsizetype channelCount(const TLM::SDK::Lap& lap);

}  // namespace rataip::host
