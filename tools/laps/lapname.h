#pragma once

#include "sdk/lap.h"

#include <QString>

namespace rataip::laps {

/**
 * The file name of a lap without its suffix: slot, driver, session, lap, type and time, as in
 * "car03_Ada-Berg_practice_lap4_flying_1m34s512". It contains only letters, digits, "-" and "_", so
 * that every file system accepts it.
 */
[[nodiscard]] QString lapFileName(const TLM::SDK::LapHeader& lap);

}  // namespace rataip::laps
