#pragma once

#include "tools/simulator/world.h"

#include <string>

namespace simulator {

/**
 * The session information of `world` in the simulator's format: weekend, sessions with results,
 * drivers, set-up and more. Latin-1, lines end in "\n", the first line is "---", the last "...".
 */
std::string sessionText(const World& world, bool replay);

}  // namespace simulator
