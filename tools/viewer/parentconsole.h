#pragma once

namespace rataip::viewer {

/**
 * Sends standard output and standard error to the console that the program was started from, on
 * systems that do not do so for programs with windows. Leaves redirected streams alone. Call it
 * once, before the first output.
 */
void useParentConsole();

}  // namespace rataip::viewer
