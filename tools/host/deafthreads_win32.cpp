#include "tools/host/deafthreads.h"

namespace rataip::host {

// Here the system starts a thread of its own for each request.
class DeafThreads::State {};

DeafThreads::DeafThreads() = default;

DeafThreads::~DeafThreads() = default;

}  // namespace rataip::host
