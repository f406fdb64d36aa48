#include "tools/host/endrequestblocker.h"

namespace rataip::host {

// Windows starts a new thread for each request, so there is nothing to block.
class EndRequestBlocker::State {};

EndRequestBlocker::EndRequestBlocker() = default;

EndRequestBlocker::~EndRequestBlocker() = default;

}  // namespace rataip::host
