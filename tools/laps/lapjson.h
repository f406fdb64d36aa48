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
 * A lap time is in milliseconds, or null when it is not set or means "no time". Ids and dates are
 * texts. NaN and infinities, which JSON does not have, are null.
 */
[[nodiscard]] QJsonObject lapJson(const TLM::SDK::Lap& lap);

/** Only the part "header". */
[[nodiscard]] QJsonObject lapHeaderJson(const TLM::SDK::LapHeader& lap);

/** The format "json": lapJson(), indented. */
[[nodiscard]] LapFormat jsonFormat();

}  // namespace rataip::laps
