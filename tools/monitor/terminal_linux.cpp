#include "tools/monitor/terminal.h"

#include <unistd.h>

namespace rataip::monitor {

void prepareStandardOutput() {}

bool isStandardOutputTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

}  // namespace rataip::monitor
