#pragma once

#include <csignal>

namespace rataip::host {

/**
 * The signals that ask the program to end: SIGINT (Ctrl-C), SIGTERM, and SIGHUP unless it is
 * ignored (as by nohup).
 */
[[nodiscard]] sigset_t endRequests();

}  // namespace rataip::host
