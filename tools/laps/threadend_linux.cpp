#include "tools/laps/threadend.h"

namespace rataip::laps {

// Here a program may end beside a thread that tidies up.
struct ThreadEnd::Thread {};

ThreadEnd::ThreadEnd() = default;

ThreadEnd::~ThreadEnd() = default;

void ThreadEnd::wait() {}

}  // namespace rataip::laps
