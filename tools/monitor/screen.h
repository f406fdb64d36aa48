#pragma once

namespace rataip::monitor {

/**
 * Lets an application object with fonts be made where there is no screen. Call it before the
 * object is made; what the environment asks for holds.
 */
void doWithoutScreen();

}  // namespace rataip::monitor
