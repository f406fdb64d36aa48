#include "tools/monitor/deafthreads.h"

namespace rataip::monitor {

// Here the system starts a thread of its own for each request.
class DeafThreads::State {};

DeafThreads::DeafThreads() = default;

DeafThreads::~DeafThreads() = default;

}  // namespace rataip::monitor
