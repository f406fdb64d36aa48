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

}  // namespace rataip::monitor
