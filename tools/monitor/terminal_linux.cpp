#include "tools/monitor/terminal.h"

#include <csignal>
#include <unistd.h>

namespace rataip::monitor {

void prepareStandardOutput() {
    std::signal(SIGPIPE, SIG_IGN);
}

bool isStandardOutputTerminal() {
    return isatty(STDOUT_FILENO) == 1;
}

}  // namespace rataip::monitor
