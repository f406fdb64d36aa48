#pragma once

#include "sdk/lap.h"
#include "tools/laps/lapformat.h"

#include <QJsonObject>

namespace rataip::laps {

/**
 * A lap without its readings: "header" (every field of the header under the name of its accessor),
 * "values" (each with "value" and "unit") and "channels" (each with "name", "unit", "samples" and
 * whether it is "calculated").
 *
 * A lap time that is not set, or stands for "no time", is null, else in milliseconds. Ids and dates
 * are texts. A number that JSON cannot hold (NaN, infinite) is null.
 */
[[nodiscard]] QJsonObject lapJson(const TLM::SDK::Lap& lap);

/** The part "header" alone. */
[[nodiscard]] QJsonObject lapHeaderJson(const TLM::SDK::LapHeader& lap);

/** lapJson() as a format, indented, suffix "json". */
[[nodiscard]] LapFormat jsonFormat();

}  // namespace rataip::laps
