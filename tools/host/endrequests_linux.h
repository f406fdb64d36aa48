#pragma once

#include <csignal>

namespace rataip::host {

/**
 * The signals that ask the program to end: Ctrl-C, a request of the system, and the end of the
 * terminal, but for the last one where whoever started the program (nohup) has it ignored.
 */
[[nodiscard]] sigset_t endRequests();

}  // namespace rataip::host
