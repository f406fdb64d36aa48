#include "tools/laps/threadend.h"

namespace rataip::laps {

// On Linux a program may end while one of its threads is still cleaning up.
struct ThreadEnd::Thread {};

ThreadEnd::ThreadEnd() = default;

ThreadEnd::~ThreadEnd() = default;

void ThreadEnd::wait() {}

}  // namespace rataip::laps
