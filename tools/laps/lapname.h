#pragma once

#include "sdk/lap.h"

#include <QString>

namespace rataip::laps {

/**
 * A name for files of a lap, without a suffix and without any dot: slot, driver, session, lap,
 * kind and time, "car03_Ada-Berg_practice_lap4_flying_1m34s512". It holds letters, digits, "-" and
 * "_" only, so every file system takes it, whatever the driver is called.
 */
[[nodiscard]] QString lapFileName(const TLM::SDK::LapHeader& lap);

}  // namespace rataip::laps
