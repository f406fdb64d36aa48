#pragma once

namespace rataip::monitor {

/**
 * Sets the standard output to UTF-8 where needed, and makes writing to a closed pipe fail instead
 * of ending the program. Call it once, before the first output.
 */
void prepareStandardOutput();

/** Whether the standard output is a terminal. */
[[nodiscard]] bool isStandardOutputTerminal();

/**
 * Makes an application object with fonts work where there is no screen. Call it before that
 * object is created. Does not override a platform that the environment asks for.
 */
void doWithoutScreen();

}  // namespace rataip::monitor
