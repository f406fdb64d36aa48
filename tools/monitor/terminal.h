#pragma once

namespace rataip::monitor {

/**
 * Readies the standard output for UTF-8 where that takes a call, and for a reader that goes away:
 * from then on writing to it fails and does not end the program. To be called once, before the
 * first output.
 */
void prepareStandardOutput();

/** Whether a person sees the standard output as it is written. */
[[nodiscard]] bool isStandardOutputTerminal();

/**
 * Lets an application object with fonts be made where there is no screen. To be called before the
 * object is made. Leaves a platform alone that the environment asks for.
 */
void doWithoutScreen();

}  // namespace rataip::monitor
