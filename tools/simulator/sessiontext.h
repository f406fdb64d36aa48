#pragma once

#include "tools/simulator/world.h"

#include <string>

namespace simulator {

/**
 * The session information of `world` as the simulator writes it: weekend, sessions with their
 * results, drivers, set-up and what else a real one tells. Latin-1, lines ended by "\n", the first
 * line "---", the last one "...".
 */
std::string sessionText(const World& world, bool replay);

}  // namespace simulator
