#include "tools/monitor/screen.h"

namespace rataip::monitor {

// Every session has one, and the only platform plugin that is installed as a rule draws on it.
void doWithoutScreen() {}

}  // namespace rataip::monitor
